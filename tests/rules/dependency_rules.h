// Who may include what. The walls between plug-in, host and platform keep each side loadable beside the real
// other side, so they are facts in a table, and a test walks every include of the tree past them.
#pragma once

#include <string>
#include <vector>

namespace rules {

/// One include directive: `#include <target>` or `#include "target"`.
struct Include {
    std::string file; ///< from the top of the tree
    int line = 0;
    std::string target;
    bool isQuoted = false;
};

/// The include directives in the text of `file`, comments and strings aside.
std::vector<Include> includesOf(const std::string& file, const std::string& text);

/// What is wrong with `include`, in a sentence; empty when it stays inside its walls.
std::string breach(const Include& include);

} // namespace rules
