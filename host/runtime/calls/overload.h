// The choice between methods of the same name.
#pragma once

#include "host/runtime/classes/class_info.h"
#include "host/runtime/values/value.h"

#include <string>
#include <vector>

namespace host {

/// Choose the method that takes the arguments at the lowest conversion cost; the first one of equal cost. A
/// single method is returned without a check. `owner` is the name of the class for messages.
/// Errors  ProgramError with the declarations of all methods if no method takes the arguments.
/// [main]
const MethodInfo& chooseOverload(const std::vector<const MethodInfo*>& overloads,
                                 const std::vector<Argument>& arguments, const std::string& owner);

} // namespace host
