// What the user, or a program, is told of a run.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "Base/Geometry.h"
#include "CommandLine/Options.h"
#include "CommandLine/ProgressLine.h"

namespace quillmere::cli {

/// Results go to standard output, failures and progress to standard error. One thread.
class Reporter {
public:
    explicit Reporter(const EnhanceOptions& options);

    /// `number` is that of the input, from 1.
    void progress(const std::filesystem::path& input, std::size_t number, float fraction,
                  std::chrono::seconds elapsed);
    /// `output` is empty for an asset of the photo library.
    void succeeded(const std::filesystem::path& input, const std::filesystem::path& output,
                   PixelSize size, std::chrono::duration<double> elapsed);
    /// `reason` is brought to one line.
    void failed(const std::filesystem::path& input, const std::string& reason);

private:
    EnhanceOptions options_;
    ProgressLine line_;
};

}  // namespace quillmere::cli
