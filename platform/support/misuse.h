// What the platform does with a call that has no meaning and no way to say so: it ends the process, as the
// real one would, but with a line that names the call.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace kvxplatform {

/// `text` says which call was given what, as in "CFRelease was given NULL".
[[noreturn]] inline void endForMisuse(const char* text)
{
    std::fprintf(stderr, "platform: %s\n", text);
    std::abort();
}

} // namespace kvxplatform
