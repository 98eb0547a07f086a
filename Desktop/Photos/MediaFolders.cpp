#include "Desktop/Photos/MediaFolders.h"

#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

namespace quillmere {
namespace fs = std::filesystem;
namespace {

std::optional<fs::path> absoluteFrom(const char* variable) {
    const char* named = std::getenv(variable);
    if (!named || !fs::path(named).is_absolute()) return std::nullopt;
    return fs::path(named);
}

std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

/// The text between double quotes at the beginning of `text`, where a backslash takes the next
/// letter as it is. Nothing where the quotes don't end.
std::optional<std::string> unquoted(std::string_view text) {
    if (!text.starts_with('"')) return std::nullopt;
    std::string plain;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') return plain;
        if (text[i] == '\\' && ++i == text.size()) break;
        plain += text[i];
    }
    return std::nullopt;
}

/// The rules know two forms: "$HOME/Some folder" and "/some/folder".
std::optional<fs::path> folderOf(std::string_view quoted, const fs::path& home) {
    const auto value = unquoted(quoted);
    if (!value) return std::nullopt;
    constexpr std::string_view homeMark = "$HOME";
    fs::path folder = *value;
    if (value->starts_with("$HOME/") || *value == homeMark) {
        folder = home.string() + value->substr(homeMark.size());
    }
    // A slash at the end, or two in the middle, make no other folder.
    folder = folder.lexically_normal();
    if (!folder.has_filename()) folder = folder.parent_path();
    if (!folder.is_absolute() || !folder.has_relative_path() || folder == home) return std::nullopt;
    return folder;
}

}  // namespace

std::optional<MediaFolders> userMediaFolders() {
    auto home = absoluteFrom("HOME");
    if (!home) return std::nullopt;
    *home = home->lexically_normal();
    if (!home->has_filename()) *home = home->parent_path();
    const MediaFolders usual{*home / "Pictures", *home / "Videos"};
    MediaFolders folders = usual;

    std::ifstream file(absoluteFrom("XDG_CONFIG_HOME").value_or(*home / ".config") /
                       "user-dirs.dirs");
    // A shell would read it: the last of several lines counts.
    for (std::string text; std::getline(file, text);) {
        const std::string_view line = withoutBlanks(text);
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const std::string_view key = line.substr(0, equals);
        const bool isPictures = key == "XDG_PICTURES_DIR";
        if (!isPictures && key != "XDG_VIDEOS_DIR") continue;
        const auto folder = isPictures ? &MediaFolders::pictures : &MediaFolders::videos;
        folders.*folder = folderOf(line.substr(equals + 1), *home).value_or(usual.*folder);
    }
    return folders;
}

}  // namespace quillmere
