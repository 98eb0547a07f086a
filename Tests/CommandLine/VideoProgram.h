// Videos through the command line, made and looked at by the programs of FFmpeg.
#pragma once

#include "Tests/CommandLine/EnhanceProgram.h"
#include "Tests/MovieProbe.h"

namespace quillmere {

class VideoProgram : public EnhanceProgram {
protected:
    std::filesystem::path make(const std::string& arguments, const std::string& name) const {
        return makeMovie(arguments, folder / name);
    }

    ProgramResult video(std::vector<std::string> arguments,
                        const ProgramOptions& options = {}) const {
        arguments.insert(arguments.begin(), "video");
        return runProgram(arguments, folder.path(), options);
    }

    /// "640,360", as coded.
    static std::string codedSize(const std::filesystem::path& movie) {
        std::string size = probe(movie, "-select_streams v:0 -show_entries stream=width,height");
        return size.substr(0, size.find_last_not_of("\n,") + 1);
    }

    /// Of the first `width` by `height` pixels of upright frames, over all of them, in decibels:
    /// "average" of red, green and blue, or "y" of luma as it is stored.
    static double likeness(const std::filesystem::path& a, const std::filesystem::path& b,
                           PixelSize size, const std::string& of = "average") {
        const std::string same = std::string(of == "y" ? "" : "format=gbrp,") +
                                 "crop=" + std::to_string(size.width) + ":" +
                                 std::to_string(size.height) + ":0:0";
        const std::string said = saidBy(
            "ffmpeg -nostdin -v info -i " + a.string() + " -i " + b.string() + " -lavfi '[0:v]" +
            same + "[a];[1:v]" + same +
            "[b];[a][b]psnr' -vsync passthrough -f null - 2>&1 | grep -o ' " + of + ":[0-9.inf]*'");
        return std::stod(said.substr(said.find(':') + 1));
    }
};

}  // namespace quillmere
