#include "Tests/Neural/WebPImage.h"

#include <webp/decode.h>

#include <fstream>
#include <iterator>
#include <memory>

namespace quillmere::neural {
namespace {

struct WebPDeleter {
    void operator()(std::uint8_t* pixels) const { WebPFree(pixels); }
};

}  // namespace

WebPImage WebPImage::read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    WebPImage image;
    const std::unique_ptr<std::uint8_t, WebPDeleter> decoded(
        WebPDecodeRGBA(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(),
                       &image.size.width, &image.size.height));
    if (decoded == nullptr) return {};
    const std::size_t pixels = static_cast<std::size_t>(image.size.width) * image.size.height;
    image.pixels.assign(decoded.get(), decoded.get() + pixels * 4);
    return image;
}

}  // namespace quillmere::neural
