// The command line as a user meets it: files in, files out, one line for what went wrong.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "Desktop/FileManager/DesktopFileManager.h"
#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Tests/CommandLine/Program.h"
#include "Tests/TemporaryFolder.h"

namespace quillmere {

class EnhanceProgram : public testing::Test {
protected:
    /// A PNG of one colour, or of none where `alpha` is 0.
    std::filesystem::path writePicture(const std::string& name, PixelSize size,
                                       std::uint8_t alpha = 255) const {
        const std::size_t bytes = static_cast<std::size_t>(size.width) * size.height * 4;
        const std::shared_ptr<std::uint8_t> pixels(new std::uint8_t[bytes],
                                                   std::default_delete<std::uint8_t[]>());
        for (std::size_t i = 0; i < bytes; ++i) {
            pixels.get()[i] = i % 4 == 3 ? alpha : static_cast<std::uint8_t>(alpha / 2);
        }
        WorkerPool pool(1);
        DesktopImageIO imageIO(pool);
        const auto png = imageIO.pngRepresentation(
            UIImage(CGImage(size, static_cast<std::size_t>(size.width) * 4, pixels)));
        return folder.write(name,
                            std::string(reinterpret_cast<const char*>(png->data()), png->size()));
    }

    static UIImage read(const std::filesystem::path& file) {
        WorkerPool pool(1);
        DesktopImageIO imageIO(pool);
        DesktopFileManager files;
        const auto data = files.contentsOfFile(file);
        EXPECT_TRUE(data) << data.error().localizedDescription;
        auto picture = imageIO.imageWithData(*data);
        EXPECT_TRUE(picture) << picture.error().localizedDescription;
        return *std::move(picture);
    }

    ProgramResult enhance(std::vector<std::string> arguments,
                          const ProgramOptions& options = {}) const {
        arguments.insert(arguments.begin(), "enhance");
        return runProgram(arguments, folder.path(), options);
    }

    TemporaryFolder folder;
};

/// One JSON object a line.
inline std::vector<nlohmann::json> objectsOf(const std::string& out) {
    std::istringstream lines(out);
    std::vector<nlohmann::json> objects;
    for (std::string line; std::getline(lines, line);)
        objects.push_back(nlohmann::json::parse(line));
    return objects;
}

/// What a user is told of one input: a single line that names it.
inline void expectOneLine(const std::string& err, const std::string& input,
                          const std::string& says) {
    EXPECT_THAT(err, testing::HasSubstr(says));
    EXPECT_THAT(err, testing::StartsWith("quillmere-cli: " + input + ": "));
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
}

}  // namespace quillmere
