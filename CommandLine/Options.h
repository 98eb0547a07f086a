// What the user asked of the command line.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Base/Error.h"
#include "CommandLine/PictureFormat.h"
#include "CommandLine/Setting.h"
#include "Quillmere/Models/Enhance/EnhanceStyle.h"

namespace quillmere::cli {

struct EnhanceOptions {
    std::vector<std::filesystem::path> inputs;
    std::optional<std::filesystem::path> output;  // a file or a folder, as given
    EnhanceStyle style = EnhanceStyle::high;
    std::optional<PictureFormat> format;  // the stored choice where there is none
    std::optional<int> limit;             // 1024 or 2048; likewise
    std::optional<bool> keepDate;         // likewise
    std::optional<bool> keepLocation;     // likewise
    bool library = false;                 // new assets of the photo library instead of files
    bool force = false;
    bool json = false;
    bool quiet = false;
};

struct StylesOptions {
    bool json = false;
};

struct DiagnosticsOptions {
    bool json = false;
};

/// Without a setting, all of them are listed; without a value, the setting is read.
struct SettingsOptions {
    std::optional<Setting> setting;
    std::optional<SettingValue> value;  // of the setting's kind
    bool json = false;
};

struct LibraryOptions {
    enum class Action { list, show, scan };
    Action action = Action::list;
    std::string identifier;  // of what is to be shown
    bool json = false;
};

struct VideoOptions {
    std::filesystem::path input;
    std::optional<std::filesystem::path> output;  // a file or a folder, as given
    EnhanceStyle style = EnhanceStyle::rapidHQ;
    std::optional<int> limit;    // 1024 or 2048; the stored choice where there is none
    std::optional<int> quality;  // 1 to 100; the source's data rate where there is none
    bool force = false;
    bool json = false;
    bool quiet = false;
};

/// What was asked for and needs no work: the help, or the version.
struct Message {
    std::string text;
};

using Command = std::variant<EnhanceOptions, VideoOptions, StylesOptions, DiagnosticsOptions,
                             SettingsOptions, LibraryOptions, Message, Error>;

/// Never throws; whatever is wrong with the arguments is an `Error`.
Command parseArguments(int argc, const char* const* argv);

}  // namespace quillmere::cli
