// Checks programs in the host's BASIC dialect, as shown in the documentation, against the registered classes.
//
// Checked are the names and types of variables, and of each member of a plug-in class: its name, the number
// and the types of its arguments, whether it is a property or a method, and whether it may be assigned.
// All functions: [main].
#pragma once

#include "host/runtime/classes/class_info.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace endtoend {

class BasicChecker {
public:
    /// Check a program. Its variables and classes stay declared for the next program.
    /// Returns  one message per faulty line, with the line.
    std::vector<std::string> check(const std::string& program);

    /// The members of plug-in classes in the programs since the last clearUsed(): "CLASS.DECLARATION".
    const std::set<std::string>& used() const { return used_; }
    void clearUsed() { used_.clear(); }

private:
    friend class BasicLine;

    std::map<std::string, host::Type> variables_; ///< types by name in lower case
    std::map<std::string, std::string> bases_;    ///< plug-in classes by the lower-case name of a subclass
    std::string currentClass_;                    ///< subclass that the present lines declare; else empty
    std::set<std::string> used_;
};

} // namespace endtoend
