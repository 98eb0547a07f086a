// Keeping decoders that talk to the terminal from doing so.
#pragma once

namespace quillmere {

/// While one exists, what C libraries print through `stderr` goes nowhere.
///
/// The decoders of JPEG XL, HEIC and AVIF print what they find wrong with a file, and offer no way
/// to stop that. C++ streams and writes to the descriptor are not affected; what other libraries
/// print through `stderr` in the meantime is lost too, so keep it short. Any thread, any number.
class QuietDecoders {
public:
    QuietDecoders();
    ~QuietDecoders();
    QuietDecoders(const QuietDecoders&) = delete;
    QuietDecoders& operator=(const QuietDecoders&) = delete;
};

}  // namespace quillmere
