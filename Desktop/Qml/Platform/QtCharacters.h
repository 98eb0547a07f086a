// Characters as Qt's table of Unicode parts them.
#pragma once

#include <QString>
#include <QTextBoundaryFinder>
#include <string>
#include <string_view>

namespace quillmere {

/// Answers `FirstCharacters`. Bytes that are no UTF-8 become replacement characters.
inline std::string firstCharacters(std::string_view text, std::size_t count) {
    const QString whole = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, whole);
    while (count-- > 0 && finder.toNextBoundary() >= 0) {
    }
    return whole.left(finder.position() < 0 ? whole.size() : finder.position()).toStdString();
}

}  // namespace quillmere
