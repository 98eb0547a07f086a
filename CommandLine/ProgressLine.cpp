#include "CommandLine/ProgressLine.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace quillmere::cli {
namespace {

constexpr std::size_t nameWidth = 24;
constexpr int barWidth = 24;
constexpr int narrowBarWidth = 12;

// Cuts between characters of UTF-8, and keeps what a terminal would obey off it.
std::string shortName(const std::string& name) {
    std::string shown;
    std::size_t characters = 0;
    for (const char c : name) {
        const bool continues = (static_cast<unsigned char>(c) & 0xC0) == 0x80;
        if (!continues && ++characters > nameWidth) return shown + "…";
        shown += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    }
    return shown;
}

std::string lineOf(const std::string& name, float fraction, std::chrono::seconds elapsed,
                   int width) {
    const float shown = std::clamp(fraction, 0.0f, 1.0f);
    const int filled = static_cast<int>(shown * static_cast<float>(width));
    std::string text = shortName(name) + " [" + std::string(static_cast<std::size_t>(filled), '#') +
                       std::string(static_cast<std::size_t>(width - filled), '-') + "] " +
                       std::to_string(static_cast<int>(shown * 100)) + " %";
    if (shown > 0 && shown < 1) {
        const double left = static_cast<double>(elapsed.count()) * (1.0 / shown - 1.0);
        text += ", " + durationText(left) + " left";
    }
    return text;
}

}  // namespace

std::string durationText(double seconds) {
    const auto whole = static_cast<long>(std::lround(seconds));
    if (whole < 60) return std::to_string(whole) + " s";
    if (whole < 3600) return std::to_string((whole + 30) / 60) + " min";
    return std::to_string(whole / 3600) + " h " + std::to_string(whole % 3600 / 60) + " min";
}

std::string progressText(const std::string& name, float fraction, std::chrono::seconds elapsed) {
    return lineOf(name, fraction, elapsed, barWidth);
}

std::string videoProgressText(const std::string& name, float fraction, std::chrono::seconds elapsed,
                              double framesPerSecond) {
    std::string text = lineOf(name, fraction, elapsed, narrowBarWidth);
    if (framesPerSecond > 0) {
        char rate[24];
        std::snprintf(rate, sizeof rate, ", %.*f frames/s", framesPerSecond < 10 ? 1 : 0,
                      framesPerSecond);
        text += rate;
    }
    return text;
}

ProgressLine::ProgressLine(std::FILE* stream, bool enabled)
    : stream_(stream), enabled_(enabled && isatty(fileno(stream)) == 1) {}

void ProgressLine::draw(const std::string& text) {
    if (!enabled_) return;
    std::fprintf(stream_, "\r\x1b[K%s", text.c_str());
    std::fflush(stream_);
}

void ProgressLine::clear() {
    if (!enabled_) return;
    std::fputs("\r\x1b[K", stream_);
    std::fflush(stream_);
}

}  // namespace quillmere::cli
