// The video that jobs over fakes work on.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "Tests/Fakes/FakeAVFoundation.h"

namespace quillmere {

/// Four grey frames of 4 by 2, one a second, and, if it has sound, silence in 5.1.
inline FakeMovie fourSecondMovie(bool hasSound, CVPixelFormat format = CVPixelFormat::bgra8) {
    FakeTrack video;
    video.naturalSize = {4, 2};
    video.estimatedDataRate = 1000;
    FakeTrack sound;
    sound.mediaType = AVMediaType::audio;
    sound.formatDescriptions = {CMFormatDescription(AudioStreamBasicDescription{44100, 6})};
    const auto second =
        std::make_shared<CMAudioData>(CMAudioData{{44100, 2}, std::vector<float>(88200)});
    for (int i = 0; i < 4; ++i) {
        auto pixels = std::make_shared<CVPixelBuffer>(PixelSize{4, 2}, format);
        for (std::size_t plane = 0; plane < pixels->planeCount(); ++plane) {
            const auto bytes = pixels->bytesPerRowOfPlane(plane) *
                               static_cast<std::size_t>(pixels->sizeOfPlane(plane).height);
            std::fill_n(pixels->baseAddressOfPlane(plane), bytes, std::uint8_t{200});
        }
        video.samples.push_back(
            std::make_shared<CMSampleBuffer>(MediaTime{i, 1}, MediaTime{1, 1}, pixels));
        sound.samples.push_back(std::make_shared<CMSampleBuffer>(MediaTime{i, 1}, second));
    }
    FakeMovie movie{{4, 1}, {video}, {}};
    if (hasSound) movie.tracks.push_back(sound);
    return movie;
}

}  // namespace quillmere
