// The host's own classes: exceptions and the dictionary.
// All functions: [main].
#pragma once

#include "abi/word.h"

#include <string>

namespace host {

void registerBuiltInClasses();

/// Raise an exception of one of the host's classes from a host function that the plug-in called.
void raise(const std::string& className, const std::string& message, HostInteger errorNumber = 0);

} // namespace host
