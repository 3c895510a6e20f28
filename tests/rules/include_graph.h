// Include dependencies between units and between folders.
#pragma once

#include "tests/rules/dependency_rules.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace rules {

/// Names of units or folders, each with the names of those that it includes.
using IncludeGraph = std::map<std::string, std::set<std::string>>;

/// Return the include graph of units. A unit is a header with its source, and has their path without
/// extension as name. Public platform headers, such as <CoreAudio/CoreAudio.h>, count as files of
/// platform/include.
IncludeGraph unitsOf(const std::vector<Include>& includes);

/// Return the include graph of folders with the same parent folder. The includes of a subfolder count for its
/// parent.
IncludeGraph foldersOf(const IncludeGraph& units);

/// Return the names on one cycle, with the first name repeated at the end; empty if the graph has no cycle.
std::vector<std::string> cycleIn(const IncludeGraph& graph);

} // namespace rules
