// A moment, in the one clock that records of pictures use.
#pragma once

#include <chrono>

namespace quillmere {

/// A point of universal time; which day it falls on is up to a time zone.
using Date = std::chrono::system_clock::time_point;

}  // namespace quillmere
