// Numbers as network formats order them: the highest byte first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace quillmere {

/// Reads from the front on, and never beyond the end: what is not there reads as zero or as no
/// bytes, and `failed` says so from then on.
class BigEndianReader {
public:
    explicit BigEndianReader(std::span<const std::byte> data) : data_(data) {}

    /// Of up to 8 bytes; one of 0 bytes is 0.
    std::uint64_t number(std::size_t byteCount) {
        std::uint64_t value = 0;
        for (const std::byte next : bytes(byteCount)) {
            value = value << 8 | std::to_integer<std::uint64_t>(next);
        }
        return value;
    }
    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }

    std::span<const std::byte> bytes(std::uint64_t count) {
        if (failed_ || count > data_.size()) {
            failed_ = true;
            return {};
        }
        const auto result = data_.first(static_cast<std::size_t>(count));
        data_ = data_.subspan(result.size());
        return result;
    }

    std::size_t left() const { return data_.size(); }
    bool failed() const { return failed_; }

private:
    std::span<const std::byte> data_;
    bool failed_ = false;
};

/// The lowest `byteCount` bytes of `value`.
void appendNumber(std::vector<std::byte>& target, std::uint64_t value, std::size_t byteCount);
void appendBytes(std::vector<std::byte>& target, std::span<const std::byte> bytes);
void appendText(std::vector<std::byte>& target, std::string_view text);

bool startsWith(std::span<const std::byte> data, std::string_view text);

}  // namespace quillmere
