// Every way in which a file may mean its colours, brought to 8-bit sRGB.
#pragma once

#include "Desktop/ImageIO/VipsHandles.h"

namespace quillmere {

/// Three bands of 8-bit sRGB, or four with straight (not premultiplied) alpha; null if the colours
/// can't be converted. Lazy: nothing is decoded yet.
///
/// The profile in the file counts; without one, CMYK is read as common coated print, whole numbers
/// as sRGB and floating point as linear light. Samples beyond colour and alpha are left out.
VipsImageRef toStandardColour(VipsImageRef image);

}  // namespace quillmere
