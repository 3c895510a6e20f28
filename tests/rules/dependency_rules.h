// The dependency rules: a table of the headers that each folder may include. The rules keep the plug-in, the
// host and the platform separate, so that the plug-in also works with a real host and on a real Mac.
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

/// Return the include directives in the text of `file`, without those in comments.
std::vector<Include> includesOf(const std::string& file, const std::string& text);

/// Return the rule that `include` violates, as a sentence; empty if the folder may include the header.
std::string violationOf(const Include& include);

} // namespace rules
