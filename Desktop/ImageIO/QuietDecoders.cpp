#include "Desktop/ImageIO/QuietDecoders.h"

#include <cstdio>
#include <mutex>

namespace quillmere {
namespace {

std::mutex mutex;  // guards the two below and the variable `stderr`
int count = 0;
std::FILE* loud = nullptr;

// Stays open: another thread may be in the middle of a line when the last of us goes.
std::FILE* nowhere() {
    static std::FILE* const file = std::fopen("/dev/null", "w");
    return file;
}

}  // namespace

QuietDecoders::QuietDecoders() {
    const std::lock_guard lock(mutex);
    if (count++ > 0) return;
    loud = stderr;
    // glibc lets a program set its standard streams; descriptor 2 itself is everyone's.
    if (std::FILE* file = nowhere()) stderr = file;
}

QuietDecoders::~QuietDecoders() {
    const std::lock_guard lock(mutex);
    if (--count == 0) stderr = loud;
}

}  // namespace quillmere
