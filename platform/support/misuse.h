// The end of the process after a call with invalid arguments to a function that cannot report an error.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace kvxplatform {

/// Print `text` as a line on standard error and abort. The text names the function and the argument:
/// "CFRelease was given NULL".
/// [any]
[[noreturn]] inline void endForMisuse(const char* text)
{
    std::fprintf(stderr, "platform: %s\n", text);
    std::abort();
}

} // namespace kvxplatform
