// Where a picture or a video was taken.
#pragma once

#include "Base/Date.h"

namespace quillmere {

struct Location {
    double latitude = 0;   // degrees, -90 to 90, north positive
    double longitude = 0;  // degrees, -180 to 180, east positive
    double altitude = 0;   // metres above the sea
    Date timestamp;        // of the fix

    friend bool operator==(const Location&, const Location&) = default;
};

}  // namespace quillmere
