// How a program ends that calls through a null pointer, for EXPECT_EXIT: nothing else passes for it.
#pragma once

#include "tests/support/sanitizers.h"

#include <csignal>
#include <sys/wait.h>

namespace support {

/// By the signal; a sanitizer catches that, tells of it, and exits.
inline bool endedByNullCall(int status)
{
    if (hasAddressSanitizer || hasThreadSanitizer) return WIFEXITED(status) && WEXITSTATUS(status) != 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

/// What it leaves on the standard error stream.
inline const char* const nullCallText =
    hasAddressSanitizer || hasThreadSanitizer ? "Sanitizer:? ?.*SEGV" : "^$";

} // namespace support
