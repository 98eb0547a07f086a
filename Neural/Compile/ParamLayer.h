// One line of a text graph: TYPE NAME INPUTS OUTPUTS input... output... key=value...
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::neural {

/// A layer with its parameters by number. Every method throws `ImportFailure` with the layer's
/// name where the text is not what the caller asks for.
struct ParamLayer {
    std::string type;
    std::string name;
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;
    std::map<int, std::string> parameters;

    static ParamLayer parse(const std::string& line);
    static int parseInteger(std::string_view text);

    [[noreturn]] void refuse(const std::string& what) const;
    void expect(std::size_t inputCount, std::size_t outputCount) const;

    // Each takes its parameter away, so that `expectNoMore` finds those that nobody understood.
    int integer(int key);
    int integer(int key, int otherwise);
    /// "2,0.5,1": how many, then each; empty where it is missing.
    std::vector<float> list(int key);
    /// A whole number from 1 to 16 that is written as a floating-point number.
    int factor(int key);
    void expectNoMore() const;
};

}  // namespace quillmere::neural
