// One line on the terminal that shows how far a picture is.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

namespace quillmere::cli {

/// What the line says: the name, a bar, the per cent and the time that is left. At most 79
/// columns; `fraction` in 0 to 1. Nothing is said of the time left before there is a fraction.
std::string progressText(const std::string& name, float fraction, std::chrono::seconds elapsed);

/// The same of a video, with the frames a second; 0 where they are not known.
std::string videoProgressText(const std::string& name, float fraction, std::chrono::seconds elapsed,
                              double framesPerSecond);

/// "45 s", "12 min", "3 h 20 min"
std::string durationText(double seconds);

/// Draws over itself on a terminal, and does nothing elsewhere. Used on one thread.
class ProgressLine {
public:
    ProgressLine(std::FILE* stream, bool enabled);

    void draw(const std::string& text);
    /// Leaves the line empty for what is printed next.
    void clear();

private:
    std::FILE* stream_;
    bool enabled_;
};

}  // namespace quillmere::cli
