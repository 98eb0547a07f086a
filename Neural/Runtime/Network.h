// A network that can be run: the one class that the rest of the program knows of this room.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "Base/Geometry.h"
#include "Base/Result.h"
#include "Base/WorkerPool.h"
#include "Neural/Model/PlanarImage.h"
#include "Neural/Runtime/WeightsTable.h"

namespace quillmere::neural {

/// 8-bit RGBA, rows top first; alpha is ignored.
struct ImageView {
    const std::uint8_t* pixels = nullptr;
    std::size_t bytesPerRow = 0;
    PixelSize size;
};

/// The same to write to; alpha is written as 255.
struct MutableImageView {
    std::uint8_t* pixels = nullptr;
    std::size_t bytesPerRow = 0;
    PixelSize size;
};

/// A loaded network: weights, a plan, and up to 100 MiB of memory from one run to the next. Several
/// threads may run it at once, each with activations of its own. The pool must outlive it.
///
/// All errors have the domain "quillmere.neural" and a code of `ErrorCode`.
class Network {
public:
    /// Maps and checks the compiled model in `directory` and prepares its weights on the pool,
    /// which takes a second of the processor for the largest: `NetworkCache` loads repeatedly.
    /// Every tensor is compared with its checksum; `CompiledModel` says what else is checked.
    static Result<std::shared_ptr<const Network>> load(const std::filesystem::path& directory,
                                                       WorkerPool& pool);
    /// The same, sharing equal weights with the other networks of `table`, which need not outlive
    /// the network.
    static Result<std::shared_ptr<const Network>> load(const std::filesystem::path& directory,
                                                       WorkerPool& pool, WeightsTable& table);
    ~Network();
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;

    /// The name of the input feature, "x_1" say.
    const std::string& inputName() const;
    /// Output width and height as multiples of the input's.
    int scale() const;

    /// Enlarges a picture of any size up to 65536 a side. Blocks; works on the calling thread and
    /// the pool. Errors: an empty input, an output whose size is not `scale()` times the input's,
    /// a network that is not from three channels to three, too little memory.
    Result<void> run(const ImageView& input, const MutableImageView& output) const;

    /// Gives the memory of the last run back; the next one takes it anew.
    void rest() const;

    /// The network's values as they are, neither scaled to 8 bits nor clamped. Errors as `run`.
    Result<PlanarImage> evaluate(const PlanarImage& input) const;

private:
    struct Parts;
    struct Kept;

    explicit Network(std::unique_ptr<const Parts> parts);

    template <class Fill, class Drain>
    void execute(PixelSize size, const Fill& fill, const Drain& drain) const;

    std::unique_ptr<const Parts> parts_;
    std::unique_ptr<Kept> kept_;
};

}  // namespace quillmere::neural
