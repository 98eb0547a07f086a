// The picture files of the tests, and what they show.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "Desktop/ImageIO/DesktopImageIO.h"
#include "Tests/Contracts/GraphicsPictures.h"
#include "Tests/Fakes/FakeGraphics.h"

namespace quillmere {

using Bytes = std::vector<std::byte>;

inline std::filesystem::path pictureFolder() {
    return std::filesystem::path(QUILLMERE_SOURCE_DIR) / "Tests" / "Files" / "Pictures";
}

inline Bytes pictureFile(const std::string& name) {
    std::ifstream file(pictureFolder() / name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

/// On a pool of three threads.
inline DesktopImageIO imageIO() {
    static WorkerPool pool(3);
    return DesktopImageIO(pool);
}

inline Result<UIImage> read(std::span<const std::byte> data) {
    return imageIO().imageWithData(data);
}

/// As the picture is seen, turned by the fake's own definition.
inline CGImage seen(const UIImage& picture) {
    CallLog log;
    FakeGraphics graphics(log);
    const auto context = graphics.beginImageContext(picture.size());
    context->drawInRect(picture, {0, 0, picture.size().width, picture.size().height});
    return *context->imageFromCurrentContext()->cgImage();
}

/// The largest difference between two channels of `left` and `right`.
inline int difference(std::uint32_t left, std::uint32_t right) {
    int largest = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const int step =
            static_cast<int>(left >> shift & 255) - static_cast<int>(right >> shift & 255);
        largest = std::max(largest, std::abs(step));
    }
    return largest;
}

inline int difference(const CGImage& left, const CGImage& right) {
    if (left.size() != right.size()) return 256;
    int largest = 0;
    for (int y = 0; y < left.size().height; ++y) {
        for (int x = 0; x < left.size().width; ++x) {
            largest = std::max(largest, difference(colourAt(left, x, y), colourAt(right, x, y)));
        }
    }
    return largest;
}

/// What every error of this room has to be like: one whole sentence or more, on one line.
inline void expectSentence(const Error& error) {
    const std::string& text = error.localizedDescription;
    EXPECT_EQ(error.domain, "quillmere.imageio");
    EXPECT_NE(error.code, 0);
    ASSERT_GT(text.size(), 10u);
    EXPECT_TRUE(text.front() >= 'A' && text.front() <= 'Z') << text;
    EXPECT_EQ(text.back(), '.') << text;
    EXPECT_EQ(text.find_first_of("\n\t"), std::string::npos) << text;
}

}  // namespace quillmere
