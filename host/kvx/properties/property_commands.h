// The commands `kvx get` and `kvx set`, which read and write any property of any audio object through the
// library's methods.
// All functions: [main].
#pragma once

#include "host/kvx/library/library.h"

#include <string>
#include <vector>

namespace kvx {

/// The arguments and options of both commands.
struct PropertyOptions {
    std::string object;             ///< "system", a device, "simulated", "id:N" or "stream:N"
    std::string selector;           ///< selector of the property; empty: `kvx get` prints all properties
    std::vector<std::string> value; ///< the value, as the words of the command line
    std::string scope = "global";
    std::string element = "0";
    bool isJson = false; ///< true: print JSON
    bool isHex = false;  ///< true: `value` and the output are hexadecimal bytes
    LibraryOptions library;
};

/// The words that stand for selectors, such as "rate".
std::vector<std::string> selectorWords();

/// Run `kvx get`: print one property or all properties of an object.
/// Returns  the exit code.
/// Errors   throws Failure.
int runGet(const PropertyOptions& options);

/// Run `kvx set`: write a property, read the property back and print it.
/// Returns  the exit code.
/// Errors   throws Failure, also if the property does not have the written value.
int runSet(const PropertyOptions& options);

} // namespace kvx
