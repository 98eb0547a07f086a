#include "CommandLine/LibraryArguments.h"

namespace quillmere::cli {

LibraryArguments::LibraryArguments(CLI::App& app)
    : CommandArguments(app, "library", "List the pictures and videos of the photo library") {
    arguments().require_subcommand(0, 1);
    arguments().add_flag("--json", options_.json, "One JSON object a line");
    arguments().fallthrough();
    arguments().add_subcommand("list", "All of them, the newest first (the default)");
    show_ = arguments().add_subcommand("show", "What the library knows of one");
    show_->add_option("ID", options_.identifier, "Its identifier, as the list has it")
        ->required()
        ->option_text(" ");
    show_->fallthrough();
    scan_ = arguments().add_subcommand("scan", "Look at every file of the library's folders again");
    scan_->fallthrough();
}

Command LibraryArguments::command() {
    if (show_->parsed()) options_.action = LibraryOptions::Action::show;
    if (scan_->parsed()) options_.action = LibraryOptions::Action::scan;
    return options_;
}

}  // namespace quillmere::cli
