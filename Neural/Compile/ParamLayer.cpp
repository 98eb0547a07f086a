#include "Neural/Compile/ParamLayer.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>
#include <utility>

#include "Neural/Compile/GraphBuilder.h"

namespace quillmere::neural {
namespace {

template <class Number>
Number parseNumber(std::string_view text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stopped, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc() || stopped != end) {
        throw ImportFailure{"\"" + std::string(text) + "\" is not the number that it should be"};
    }
    return number;
}

std::optional<std::string> take(std::map<int, std::string>& parameters, int key) {
    auto node = parameters.extract(key);
    if (node.empty()) return std::nullopt;
    return std::move(node.mapped());
}

}  // namespace

ParamLayer ParamLayer::parse(const std::string& line) {
    std::istringstream words(line);
    ParamLayer layer;
    std::string inputCount;
    std::string outputCount;
    words >> layer.type >> layer.name >> inputCount >> outputCount;
    const auto readNames = [&](std::vector<std::string>& names, const std::string& count) {
        const int wanted = parseInteger(count);
        for (int i = 0; i < wanted; ++i) {
            if (!(words >> names.emplace_back())) layer.refuse("ends too early");
        }
    };
    readNames(layer.inputs, inputCount);
    readNames(layer.outputs, outputCount);
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos) layer.refuse("has a parameter without a value");
        const int key = parseInteger(std::string_view(word).substr(0, equals));
        if (!layer.parameters.emplace(key, word.substr(equals + 1)).second) {
            layer.refuse("has a parameter twice");
        }
    }
    return layer;
}

int ParamLayer::parseInteger(std::string_view text) { return parseNumber<int>(text); }

void ParamLayer::refuse(const std::string& what) const {
    throw ImportFailure{"the layer \"" + name + "\" (" + type + ") " + what};
}

void ParamLayer::expect(std::size_t inputCount, std::size_t outputCount) const {
    if (inputs.size() != inputCount || outputs.size() != outputCount) {
        refuse("has an input or output too many or too few");
    }
}

int ParamLayer::integer(int key) {
    const auto text = take(parameters, key);
    if (!text) refuse("lacks parameter " + std::to_string(key));
    return parseInteger(*text);
}

int ParamLayer::integer(int key, int otherwise) {
    return parameters.contains(key) ? integer(key) : otherwise;
}

std::vector<float> ParamLayer::list(int key) {
    std::istringstream words(take(parameters, key).value_or("0"));
    std::vector<float> values;
    for (std::string word; std::getline(words, word, ',');) {
        values.push_back(parseNumber<float>(word));
    }
    if (values.empty() || values.front() != static_cast<float>(values.size() - 1)) {
        refuse("has a list that is not as long as it says");
    }
    values.erase(values.begin());
    return values;
}

int ParamLayer::factor(int key) {
    const auto value = parseNumber<float>(take(parameters, key).value_or("0"));
    if (!(value >= 1 && value <= 16) || std::floor(value) != value) {
        refuse("has a factor that is no whole number from 1 to 16");
    }
    return static_cast<int>(value);
}

void ParamLayer::expectNoMore() const {
    if (parameters.empty()) return;
    refuse("has parameter " + std::to_string(parameters.begin()->first) +
           ", which is not supported");
}

}  // namespace quillmere::neural
