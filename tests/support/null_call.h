// How a program ends that calls a function through a null pointer: the arguments for EXPECT_EXIT.
#pragma once

#include "tests/support/sanitizers.h"

#include <csignal>
#include <sys/wait.h>

namespace support {

/// Return whether the wait status is that of a program that SIGSEGV, or a sanitizer's handler of it, ended.
inline bool endedByNullCall(int status)
{
    if (hasAddressSanitizer || hasThreadSanitizer) return WIFEXITED(status) && WEXITSTATUS(status) != 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

/// Pattern of the text that a program writes to standard error when a null call ends it.
inline const char* const nullCallText =
    hasAddressSanitizer || hasThreadSanitizer ? "Sanitizer:? ?.*SEGV" : "^$";

} // namespace support
