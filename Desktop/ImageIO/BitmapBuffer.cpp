#include "Desktop/ImageIO/BitmapBuffer.h"

#include <new>
#include <string>

#include "Desktop/ImageIO/ImageIOError.h"

namespace quillmere {

std::optional<BitmapBuffer> BitmapBuffer::create(PixelSize size) {
    const std::size_t bytes =
        4 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    std::shared_ptr<std::uint8_t[]> memory(new (std::nothrow) std::uint8_t[bytes]);
    if (!memory) return {};
    return BitmapBuffer(size, std::move(memory));
}

Result<BitmapBuffer> BitmapBuffer::createForFile(PixelSize size) {
    constexpr int longestSide = 65'535;
    constexpr std::int64_t mostPixels = 500'000'000;
    if (size.width > longestSide || size.height > longestSide ||
        std::int64_t{size.width} * size.height > mostPixels) {
        return imageIOError(ImageIOErrorCode::tooLarge,
                            "The picture is too large: it has %@ by %@ pixels, and Quillmere "
                            "reads up to 500 million, with sides of up to 65,535.",
                            {std::to_string(size.width), std::to_string(size.height)});
    }
    std::optional<BitmapBuffer> buffer = create(size);
    if (!buffer) return imageIOOutOfMemory();
    return *std::move(buffer);
}

}  // namespace quillmere
