#include "Desktop/ImageIO/BigEndian.h"

namespace quillmere {

void appendNumber(std::vector<std::byte>& target, std::uint64_t value, std::size_t byteCount) {
    for (std::size_t i = byteCount; i-- > 0;) {
        target.push_back(static_cast<std::byte>(value >> 8 * i & 255));
    }
}

void appendBytes(std::vector<std::byte>& target, std::span<const std::byte> bytes) {
    target.insert(target.end(), bytes.begin(), bytes.end());
}

void appendText(std::vector<std::byte>& target, std::string_view text) {
    appendBytes(target, std::as_bytes(std::span(text)));
}

bool startsWith(std::span<const std::byte> data, std::string_view text) {
    if (data.size() < text.size()) return false;
    return std::string_view(reinterpret_cast<const char*>(data.data()), text.size()) == text;
}

}  // namespace quillmere
