// quillmere-modelc: published weights in, a compiled model out.
#include <CLI/CLI.hpp>
#include <iostream>

#include "Neural/Compile/Importers.h"
#include "Neural/Model/CompiledModel.h"

namespace {

using namespace quillmere;
using namespace quillmere::neural;

constexpr int kFailure = 1;
constexpr int kUsage = 2;

struct Arguments {
    ImportOptions import;
    std::filesystem::path first;
    std::filesystem::path second;
    std::vector<std::filesystem::path> models;
    std::filesystem::path output;
};

int report(const Error& error) {
    std::cerr << "quillmere-modelc: " << error.localizedDescription << "\n";
    return kFailure;
}

int write(const Result<ModelContents>& contents, const std::filesystem::path& output) {
    if (!contents) return report(contents.error());
    const auto written = writeModel(contents->graph, contents->tensors, output);
    return written ? 0 : report(written.error());
}

int mean(const Arguments& arguments) {
    std::vector<CompiledModel> models;
    for (const std::filesystem::path& directory : arguments.models) {
        auto model = CompiledModel::open(directory);
        if (!model) return report(model.error());
        if (auto verified = model->verify(); !verified) return report(verified.error());
        models.push_back(std::move(*model));
    }
    return write(composeMean(models, arguments.import.inputName), arguments.output);
}

int verify(const std::filesystem::path& directory) {
    const auto model = CompiledModel::open(directory);
    if (!model) return report(model.error());
    const auto verified = model->verify();
    return verified ? 0 : report(verified.error());
}

void addOutput(CLI::App& command, Arguments& arguments) {
    command.add_option("--input-name", arguments.import.inputName, "name of the input feature")
        ->required();
    command.add_option("-o,--output", arguments.output, "directory to write, NAME.mlmodelc")
        ->required();
}

void addSource(CLI::App& command, Arguments& arguments) {
    ImportOptions& import = arguments.import;
    command.add_option("--root", import.root, "folder that the package was unpacked to")
        ->default_val(".");
    command.add_option("--range", import.range, "what white is to the network")
        ->required()
        ->check(CLI::IsMember({1, 255}));
    command.add_option("--package", import.provenance.package, "name of the package")->required();
    command.add_option("--package-version", import.provenance.version, "its version")->required();
    command.add_option("--integrity", import.provenance.integrity, "its archive's checksum")
        ->required();
    command.add_option("--licence", import.provenance.licence, "SPDX, of the weights")->required();
    addOutput(command, arguments);
}

}  // namespace

int main(int argc, char** argv) try {
    Arguments arguments;
    CLI::App app("Compiles published network weights for Quillmere.", "quillmere-modelc");
    CLI::Option* verified =
        app.add_option("--verify", arguments.first, "check a compiled model against its checksums");

    bool printsVersion = false;
    app.add_flag("--format-version", printsVersion, "print the version of what it writes");

    CLI::App* param = app.add_subcommand("import-param", "from a text graph and its weights");
    param->add_option("PARAM", arguments.first, "the graph, relative to --root")->required();
    param->add_option("BIN", arguments.second, "the weights, relative to --root")->required();
    addSource(*param, arguments);

    CLI::App* layers = app.add_subcommand("import-layers", "from a layered topology");
    layers->add_option("JSON", arguments.first, "model.json, relative to --root")->required();
    addSource(*layers, arguments);

    CLI::App* composite = app.add_subcommand("mean", "the mean of compiled models as one");
    composite->add_option("MODEL", arguments.models, "compiled models")->required();
    addOutput(*composite, arguments);
    app.require_subcommand(0, 1);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kUsage;
    }
    if (*param) {
        return write(importParam(arguments.first, arguments.second, arguments.import),
                     arguments.output);
    }
    if (*layers) return write(importLayers(arguments.first, arguments.import), arguments.output);
    if (*composite) return mean(arguments);
    if (*verified) return verify(arguments.first);
    if (printsVersion) {
        std::cout << kFormatVersion << "\n";
        return 0;
    }
    std::cerr << app.help();
    return kUsage;
} catch (const std::exception& error) {
    std::cerr << "quillmere-modelc: " << error.what() << "\n";
    return kFailure;
}
