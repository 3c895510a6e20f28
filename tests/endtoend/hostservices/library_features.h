// Uses the features of the library one after the other, as a host program does.
// All functions: [main].
#pragma once

#include "host/runtime/host.h"

#include <map>
#include <string>

namespace endtoend {

/// Result of each feature, by name: "works", or the unexpected results, separated by "; ".
using FeatureResults = std::map<std::string, std::string>;

/// Use every feature once. The result "release of everything" names the kinds of objects that are still
/// alive.
FeatureResults useAllFeatures(host::Host& host);

} // namespace endtoend
