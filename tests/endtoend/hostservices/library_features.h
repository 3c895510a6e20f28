// The features of the library, used one after the other as a host program does.
// All functions: [main].
#pragma once

#include "host/runtime/host.h"

#include <map>
#include <string>

namespace endtoend {

/// By feature: "works", or the unexpected results, separated by "; ".
using FeatureResults = std::map<std::string, std::string>;

/// Use every feature once, and name the kinds of host values and platform objects that are alive afterwards.
FeatureResults useAllFeatures(host::Host& host);

} // namespace endtoend
