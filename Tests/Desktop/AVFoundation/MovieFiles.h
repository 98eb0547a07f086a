// Real movie files: made by the ffmpeg program, looked at by ffprobe.
#pragma once

#include <filesystem>
#include <string>

#include "Desktop/AVFoundation/DesktopAVFoundation.h"
#include "Desktop/Dispatch/DesktopDispatch.h"
#include "Tests/MovieCopy.h"
#include "Tests/MovieProbe.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {

class MovieFiles : public testing::Test {
protected:
    /// `arguments` as ffmpeg takes them, without the file at the end.
    std::filesystem::path make(const std::string& arguments, const std::string& name) {
        return makeMovie(arguments, folder / name);
    }

    MovieCopyResult copy(const std::filesystem::path& from, const std::filesystem::path& to,
                         const MovieCopyOptions& options = {}) {
        return copyMovie(movies, dispatch, from, to, options);
    }

    TemporaryFolder folder;
    DesktopDispatch dispatch;
    DesktopAVFoundation movies{dispatch};
};

}  // namespace quillmere
