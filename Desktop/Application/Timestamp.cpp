#include "Desktop/Application/Timestamp.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace quillmere {

std::string timestamp(std::chrono::system_clock::time_point moment) {
    using namespace std::chrono;
    const auto second = floor<seconds>(moment);
    const std::time_t time = system_clock::to_time_t(second);
    std::tm fields{};
    gmtime_r(&time, &fields);
    std::array<char, 40> text{};
    const std::size_t length =
        std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &fields);
    std::array<char, 8> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%03dZ",
                  static_cast<int>(duration_cast<milliseconds>(moment - second).count()) % 1000);
    return std::string(text.data(), length) + fraction.data();
}

}  // namespace quillmere
