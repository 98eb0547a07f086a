// How near a picture is to the true one, by three published measures of brightness.
#pragma once

#include "Benchmarks/GreyPicture.h"

namespace quillmere::benchmark {

/// The peak signal-to-noise ratio, in dB. Both pictures, here and below, are of one size.
double signalToNoise(const GreyPicture& picture, const GreyPicture& truth);

/// The multi-scale structural similarity of Wang, Simoncelli and Bovik ("Multi-scale structural
/// similarity for image quality assessment", 2003): 1 for equal pictures, less for others. Five
/// scales; both sides at least 176 pixels.
double structuralSimilarity(const GreyPicture& picture, const GreyPicture& truth);

/// The gradient magnitude similarity deviation of Xue, Zhang, Mou and Bovik ("Gradient magnitude
/// similarity deviation: a highly efficient perceptual image quality index", 2014): 0 for equal
/// pictures, more for others.
double gradientDeviation(const GreyPicture& picture, const GreyPicture& truth);

}  // namespace quillmere::benchmark
