#include "Desktop/Localization/PseudoLanguage.h"

#include <cstddef>

namespace quillmere {
namespace {

constexpr std::string_view rightToLeftMark = "\u200f";

std::string_view accented(const char& letter) {
    switch (letter) {
        case 'a':
            return "á";
        case 'e':
            return "é";
        case 'i':
            return "ï";
        case 'o':
            return "ö";
        case 'u':
            return "ü";
        case 'c':
            return "ç";
        case 'n':
            return "ñ";
        case 's':
            return "š";
        case 'y':
            return "ý";
        case 'A':
            return "Å";
        case 'C':
            return "Č";
        case 'E':
            return "É";
        case 'O':
            return "Ø";
        case 'S':
            return "Š";
        default:
            return {&letter, 1};
    }
}

/// Of the placeholder that `text` begins with; 0 without one.
std::size_t placeholderLength(std::string_view text) {
    if (text.starts_with("%@") || text.starts_with("%%")) return 2;
    return text.size() >= 4 && text[0] == '%' && text.substr(2, 2) == "$@" ? 4 : 0;
}

}  // namespace

std::string pseudolocalized(std::string_view english) {
    std::string text;
    std::string more;  // the text's own beginning once again, as natural a place to break lines
    std::size_t wanted = (english.size() * 2 + 4) / 5;
    for (std::size_t i = 0; i < english.size();) {
        if (const std::size_t length = placeholderLength(english.substr(i))) {
            text += english.substr(i, length);
            i += length;
            continue;
        }
        const std::string_view letter = accented(english[i++]);
        text += letter;
        if (wanted == 0) continue;
        more += letter;
        --wanted;
    }
    return std::string(rightToLeftMark) + "[" + text + " " + more + "]";
}

}  // namespace quillmere
