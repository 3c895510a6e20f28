// Include dependencies between units and between folders.
#pragma once

#include "tests/rules/dependency_rules.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace rules {

/// Names, each with the names that it includes.
using IncludeGraph = std::map<std::string, std::set<std::string>>;

/// The include graph of units. A header and the source with the same name are one unit, named by its path
/// without extension. Platform headers have public names, but count as files of platform/include.
IncludeGraph unitsOf(const std::vector<Include>& includes);

/// The include graph of sibling folders. A folder includes its subfolders.
IncludeGraph foldersOf(const IncludeGraph& units);

/// The names on one cycle, with the first name repeated at the end; empty if the graph has no cycle.
std::vector<std::string> cycleIn(const IncludeGraph& graph);

} // namespace rules
