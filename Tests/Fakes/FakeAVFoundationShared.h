// What the two halves of FakeAVFoundation have in common.
#pragma once

#include "Tests/Fakes/FakeAVFoundation.h"

namespace quillmere {

struct FakeAVFoundation::Shared {
    std::mutex mutex;  // for everything here
    std::set<AVMediaType> held;
    std::map<std::filesystem::path, FakeWrittenMovie> written;
    std::map<AVMediaType, bool> copiesSampleData;
    std::vector<std::function<void()>> inputsChanged;  // wakes the inputs that still live
};

}  // namespace quillmere
