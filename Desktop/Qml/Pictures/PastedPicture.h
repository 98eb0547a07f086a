// A picture that another program put on the clipboard.
#pragma once

#include <QMimeData>
#include <optional>

#include "Platform/ImageIO/ImageIO.h"
#include "Quillmere/Views/Home/WaysIn.h"

namespace quillmere {

/// How to decode the picture that `data` holds, on any thread and once; nothing where it holds
/// none. Bytes in a format of ours are left to `imageIO`; what only Qt knows how to read is read
/// here, and brought to our own pixels by what is given.
std::optional<WaysIn::Decode> pictureIn(const QMimeData& data, ImageIO& imageIO);

}  // namespace quillmere
