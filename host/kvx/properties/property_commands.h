// kvx get and kvx set: any property of any audio object, through the library's methods.
// All functions: [main].
#pragma once

#include "host/kvx/library/library.h"

#include <string>
#include <vector>

namespace kvx {

/// The arguments and options of both commands.
struct PropertyOptions {
    std::string object;             ///< "system", a device, "id:N" or "stream:N"
    std::string selector;           ///< selector of the property; empty in kvx get: all properties
    std::vector<std::string> value; ///< words of the value
    std::string scope = "global";
    std::string element = "0";
    bool isHex = false; ///< true: values are hexadecimal bytes
    LibraryOptions library;
};

/// Print a property.
/// Returns  the exit code.
/// Errors   throws Failure.
int getCommand(const PropertyOptions& options);

/// Write a property and print its new value.
/// Returns  the exit code.
/// Errors   throws Failure, also if the property reads back another value.
int setCommand(const PropertyOptions& options);

} // namespace kvx
