// The end of a program that calls a function through a null pointer, for EXPECT_EXIT.
#pragma once

#include "tests/support/sanitizers.h"

#include <csignal>
#include <sys/wait.h>

namespace support {

/// Return whether SIGSEGV ended the program, or a sanitizer that caught the signal.
inline bool endedByNullCall(int status)
{
    if (hasAddressSanitizer || hasThreadSanitizer) return WIFEXITED(status) && WEXITSTATUS(status) != 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

/// Pattern of the text that such a program writes to standard error.
inline const char* const nullCallText =
    hasAddressSanitizer || hasThreadSanitizer ? "Sanitizer:? ?.*SEGV" : "^$";

} // namespace support
