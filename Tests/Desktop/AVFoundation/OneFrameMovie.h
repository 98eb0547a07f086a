// Movies of a single frame.
#pragma once

#include <filesystem>
#include <memory>

#include "Platform/AVFoundation/AVFoundation.h"
#include "Tests/Awaited.h"

namespace quillmere {

inline void writeOneFrame(AVFoundation& movies, const std::filesystem::path& target,
                          const AVVideoOutputSettings& settings, const CVPixelBufferRef& frame,
                          const AffineTransform& transform = {}) {
    std::filesystem::remove(target);
    const auto writer = movies.assetWriterWithURL(target, AVFileType::quickTimeMovie).value();
    const auto input = movies.assetWriterInput(settings);
    input->setTransform(transform);
    writer->addInput(input);
    writer->startWriting();
    writer->startSessionAtSourceTime(MediaTime::zero());
    input->appendSampleBuffer(
        std::make_shared<CMSampleBuffer>(MediaTime::zero(), MediaTime{1, 25}, frame));
    Awaited<bool> done;
    writer->finishWritingWithCompletionHandler([&] { done.set(true); });
    done.get();
}

}  // namespace quillmere
