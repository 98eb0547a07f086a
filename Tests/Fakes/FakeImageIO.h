#pragma once

#include <set>
#include <string>

#include "Platform/ImageIO/ImageIO.h"
#include "Tests/Fakes/CallLog.h"

namespace quillmere {

/// A file's bytes are "FORMAT WIDTHxHEIGHT", in points; what is read so is a white picture.
/// Encodings are logged as `jpeg 0.9`, `heic 0.9` and `png`.
class FakeImageIO final : public ImageIO {
public:
    explicit FakeImageIO(CallLog& log) : log_(log) {}

    /// "jpeg", "heic" or "png": formats that can't be encoded. Set before the calls.
    std::set<std::string> refused;

    static std::vector<std::byte> bytesOf(const std::string& text) {
        const auto bytes = std::as_bytes(std::span(text));
        return {bytes.begin(), bytes.end()};
    }

    static UIImage picture(PixelSize size,
                           UIImageOrientation orientation = UIImageOrientation::up) {
        const std::size_t stride = static_cast<std::size_t>(size.width) * CGImage::bytesPerPixel;
        const auto pixels = std::make_shared<std::vector<std::uint8_t>>(
            stride * static_cast<std::size_t>(size.height), std::uint8_t{255});
        const std::shared_ptr<const std::uint8_t> shared(pixels, pixels->data());
        return UIImage(CGImage(size, stride, shared), 1, orientation);
    }

    Result<UIImage> imageWithData(std::span<const std::byte> data) override {
        const std::string text(reinterpret_cast<const char*>(data.data()), data.size());
        int width = 0;
        int height = 0;
        if (std::sscanf(text.c_str(), "%*s %dx%d", &width, &height) != 2) {
            return Error{"fake.imageio", 1, "This is no picture."};
        }
        return picture({width, height});
    }
    Result<std::vector<std::byte>> jpegRepresentation(const UIImage& image,
                                                      double quality) override {
        return encode("jpeg", quality, image);
    }
    Result<std::vector<std::byte>> pngRepresentation(const UIImage& image) override {
        return encode("png", std::nullopt, image);
    }
    Result<std::vector<std::byte>> heicRepresentation(const UIImage& image,
                                                      double quality) override {
        return encode("heic", quality, image);
    }

private:
    Result<std::vector<std::byte>> encode(const std::string& format, std::optional<double> quality,
                                          const UIImage& image) {
        log_.record(quality ? format + " " + std::to_string(*quality).substr(0, 3) : format);
        if (refused.contains(format)) return Error{"fake.imageio", 2, "It can't be encoded."};
        const Size size = image.size();
        return bytesOf(format + " " + std::to_string(static_cast<int>(size.width)) + "x" +
                       std::to_string(static_cast<int>(size.height)));
    }

    CallLog& log_;
};

}  // namespace quillmere
