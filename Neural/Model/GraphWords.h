// The words of graph.json for what is an enumeration in a graph.
#pragma once

#include <utility>

#include "Neural/Model/Graph.h"

namespace quillmere::neural {

inline constexpr std::pair<Activation, const char*> kActivations[] = {
    {Activation::none, "none"},
    {Activation::relu, "relu"},
    {Activation::leakyRelu, "leakyRelu"},
    {Activation::prelu, "prelu"},
};
inline constexpr std::pair<DepthOrder, const char*> kDepthOrders[] = {
    {DepthOrder::channelFirst, "channelFirst"},
    {DepthOrder::phaseFirst, "phaseFirst"},
};

}  // namespace quillmere::neural
