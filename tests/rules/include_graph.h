// Include dependencies between units and between folders.
#pragma once

#include "tests/rules/dependency_rules.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace rules {

/// For each name, the names that it includes.
using IncludeGraph = std::map<std::string, std::set<std::string>>;

/// Units and the units that they include. A header and the source of the same name are one unit, named by
/// its path without extension. Platform headers under their public names count as files of platform/include.
IncludeGraph unitsOf(const std::vector<Include>& includes);

/// Folders and their sibling folders that they include, each folder with its subfolders.
IncludeGraph foldersOf(const IncludeGraph& units);

/// The names on one cycle, the first repeated at the end; empty if there is none.
std::vector<std::string> cycleIn(const IncludeGraph& graph);

} // namespace rules
