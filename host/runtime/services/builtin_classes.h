// The classes of the host: exceptions and the dictionary.
// All functions: [main].
#pragma once

#include "abi/word.h"

#include <string>

namespace host {

void registerBuiltInClasses();

/// Make an exception object of a host class and raise the exception, from a service that the plug-in called.
void raise(const std::string& className, const std::string& message, HostInteger errorNumber = 0);

} // namespace host
