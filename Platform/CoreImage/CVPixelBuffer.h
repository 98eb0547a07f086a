// A block of pixels that a network or a movie frame lives in.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "Base/Geometry.h"

namespace quillmere {

/// The values are the platform's four-character codes.
enum class CVPixelFormat : std::uint32_t {
    rgba8 = 0x52474241,  // 8-bit R, G, B, A in that byte order, alpha premultiplied, sRGB
    bgra8 = 0x42475241,  // the same with B, G, R, A; kCVPixelFormatType_32BGRA
    // Three planes Y, Cb, Cr of 8 bits, chroma halved both ways (rounded up), BT.709 matrix and
    // primaries, luma 16 to 235; kCVPixelFormatType_420YpCbCr8Planar
    yCbCr8Planar420 = 0x79343230,
};

/// What an output or a pool is asked for; `kCVPixelBufferPixelFormatTypeKey`.
struct CVPixelBufferAttributes {
    CVPixelFormat pixelFormatType = CVPixelFormat::bgra8;

    friend bool operator==(const CVPixelBufferAttributes&,
                           const CVPixelBufferAttributes&) = default;
};

class CVPixelBuffer;

/// A picture in the layout that it came in, for whoever can do without a conversion. Without
/// transparency; immutable; any thread.
class CVPixelBufferBacking {
public:
    virtual ~CVPixelBufferBacking() = default;

    /// Writes all pixels of `buffer`, in its size and format. Throws std::bad_alloc.
    virtual void fill(CVPixelBuffer& buffer) const = 0;
};

/// Rows from the top down. Written by whoever made it, before it is handed on; then only read, on
/// any thread.
///
/// Its picture may be that of a backing, which then fills the pixels at the first access to an
/// address, once, while other threads that ask wait. An address to write at drops the backing.
class CVPixelBuffer {
public:
    static constexpr std::size_t mostPlanes = 3;
    /// Bytes behind the last row that vector code may read.
    static constexpr std::size_t readableBeyond = 64;

    struct Plane {
        std::uint8_t* baseAddress = nullptr;
        std::size_t bytesPerRow = 0;
    };
    using Planes = std::array<Plane, mostPlanes>;

    static constexpr std::size_t planeCount(CVPixelFormat format) {
        return format == CVPixelFormat::yCbCr8Planar420 ? 3 : 1;
    }
    /// The size of a plane in its own pixels.
    static constexpr PixelSize sizeOfPlane(PixelSize size, CVPixelFormat format,
                                           std::size_t plane) {
        if (format != CVPixelFormat::yCbCr8Planar420 || plane == 0) return size;
        return {(size.width + 1) / 2, (size.height + 1) / 2};
    }

    /// Both sides above zero. The contents are not filled in. Throws std::bad_alloc.
    CVPixelBuffer(PixelSize size, CVPixelFormat format) : size_(size), format_(format) {
        std::array<std::size_t, mostPlanes> offsets{};
        std::size_t bytes = 0;
        for (std::size_t plane = 0; plane < planeCount(); ++plane) {
            const PixelSize own = sizeOfPlane(plane);
            planes_[plane].bytesPerRow =
                static_cast<std::size_t>(own.width) * (planeCount() == 1 ? 4 : 1);
            offsets[plane] = bytes;
            bytes += planes_[plane].bytesPerRow * static_cast<std::size_t>(own.height);
        }
        const std::shared_ptr<std::uint8_t[]> memory(new std::uint8_t[bytes + readableBeyond]);
        for (std::size_t plane = 0; plane < planeCount(); ++plane) {
            planes_[plane].baseAddress = memory.get() + offsets[plane];
        }
        owner_ = memory;
    }

    /// Pixels that somebody else holds; `owner` keeps them alive.
    CVPixelBuffer(PixelSize size, CVPixelFormat format, const Planes& planes,
                  std::shared_ptr<const void> owner)
        : size_(size), format_(format), planes_(planes), owner_(std::move(owner)) {}

    PixelSize size() const { return size_; }
    CVPixelFormat format() const { return format_; }

    std::size_t planeCount() const { return planeCount(format_); }
    PixelSize sizeOfPlane(std::size_t plane) const { return sizeOfPlane(size_, format_, plane); }
    std::size_t bytesPerRowOfPlane(std::size_t plane) const { return planes_[plane].bytesPerRow; }
    /// Throws std::bad_alloc where there is a backing that can't fill the pixels.
    std::uint8_t* baseAddressOfPlane(std::size_t plane) {
        fillOnce();
        backing_.reset();
        return planes_[plane].baseAddress;
    }
    const std::uint8_t* baseAddressOfPlane(std::size_t plane) const {
        fillOnce();
        return planes_[plane].baseAddress;
    }

    /// The first plane, which is the only one but for planar formats.
    std::size_t bytesPerRow() const { return bytesPerRowOfPlane(0); }
    std::uint8_t* baseAddress() { return baseAddressOfPlane(0); }
    const std::uint8_t* baseAddress() const { return baseAddressOfPlane(0); }

    /// Null where the pixels were written by somebody else.
    const std::shared_ptr<const CVPixelBufferBacking>& backing() const { return backing_; }
    /// For whoever may write: in the place of all pixels, as are addresses from before. Null leaves
    /// the contents not filled in.
    void setBacking(std::shared_ptr<const CVPixelBufferBacking> backing) {
        backing_ = std::move(backing);
        isFilled_.store(!backing_, std::memory_order_relaxed);
    }

private:
    void fillOnce() const {
        if (isFilled_.load(std::memory_order_acquire)) return;
        const std::lock_guard lock(filling_);
        if (isFilled_.load(std::memory_order_relaxed)) return;
        CVPixelBuffer pixels(size_, format_, planes_, owner_);
        backing_->fill(pixels);
        isFilled_.store(true, std::memory_order_release);
    }

    PixelSize size_;
    CVPixelFormat format_;
    Planes planes_{};
    std::shared_ptr<const void> owner_;
    std::shared_ptr<const CVPixelBufferBacking> backing_;
    mutable std::mutex filling_;
    mutable std::atomic<bool> isFilled_ = true;
};

using CVPixelBufferRef = std::shared_ptr<const CVPixelBuffer>;

/// Buffers of one size and format, whose memory serves again when its last reference goes. Any
/// thread; buffers may outlive it.
class CVPixelBufferPool {
public:
    virtual ~CVPixelBufferPool() = default;

    /// A buffer to write into, its contents not filled in; null where memory ran out.
    virtual std::shared_ptr<CVPixelBuffer> createPixelBuffer() = 0;
};

}  // namespace quillmere
