// Small networks with reproducible weights, and a folder to compile them into.
#pragma once

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "Neural/Compile/GraphBuilder.h"
#include "Neural/Model/CompiledModel.h"
#include "Neural/Model/PlanarImage.h"

namespace quillmere::neural {

/// A new folder, removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, const std::string& bytes);

/// Evenly spread numbers in [-1, 1), the same in every run.
class Numbers {
public:
    explicit Numbers(unsigned seed = 1) : engine_(seed) {}

    float next() { return static_cast<float>(engine_()) / 0x1p31f - 1; }
    std::vector<float> many(std::size_t count);
    PlanarImage image(int channels, PixelSize size);

private:
    std::mt19937 engine_;
};

/// A builder that invents the weights.
class RandomGraph : public GraphBuilder {
public:
    explicit RandomGraph(int inputChannels = 3, int range = 1, unsigned seed = 1)
        : GraphBuilder("in", inputChannels, range), numbers_(seed) {}

    void convolve(const std::string& name, const std::string& input, int outputs, int kernel);
    void prelu(const std::string& name, const std::string& input);
    ModelContents end(const std::string& output);

private:
    Numbers numbers_;
};

/// Twice as large by depth-to-space, with a residual: every kind of operation in a few weights.
ModelContents smallNetwork(unsigned seed = 1);

/// Writes a model as `folder/name` and opens it; a failure ends the test program.
CompiledModel compiled(const ModelContents& contents, const std::filesystem::path& directory);

/// The largest difference of any two values; infinite where the shapes differ.
double largestDifference(const PlanarImage& a, const PlanarImage& b);

}  // namespace quillmere::neural
