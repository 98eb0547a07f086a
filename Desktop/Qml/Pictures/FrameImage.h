// A frame of a playing video as a picture.
#pragma once

#include <QImage>
#include <QVideoFrame>

namespace quillmere {

/// As it is stored, not turned. Brightness and colour count as BT.709 of limited range, as all our
/// movies have them; Qt itself would take them for BT.601. Null for a frame without pixels. Any
/// thread.
QImage imageOf(QVideoFrame frame);

}  // namespace quillmere
