// The dependency rules: a table of the headers that each folder may include. They keep the plug-in, the host
// and the platform separate, so that each works with the real counterpart of the others.
#pragma once

#include <string>
#include <vector>

namespace rules {

/// One include directive: `#include <target>` or `#include "target"`.
struct Include {
    std::string file; ///< path of the file that contains the directive
    int line = 0;
    std::string target;
    bool isQuoted = false;
};

/// The include directives in the text of `file`. Directives in comments do not count.
std::vector<Include> includesOf(const std::string& file, const std::string& text);

/// The rule that `include` violates, as a sentence; empty if the folder may include the header.
std::string violationOf(const Include& include);

} // namespace rules
