// Arguments for EXPECT_EXIT, for a program that must end by a call through a null pointer.
#pragma once

#include "tests/support/sanitizers.h"

#include <csignal>
#include <sys/wait.h>

namespace support {

/// Return whether a wait status says that SIGSEGV, or a sanitizer that caught the signal, ended the program.
inline bool endedByNullCall(int status)
{
    if (hasAddressSanitizer || hasThreadSanitizer) return WIFEXITED(status) && WEXITSTATUS(status) != 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

/// Pattern of the text that a program writes to standard error when a null call ends it.
inline const char* const nullCallText =
    hasAddressSanitizer || hasThreadSanitizer ? "Sanitizer:? ?.*SEGV" : "^$";

} // namespace support
