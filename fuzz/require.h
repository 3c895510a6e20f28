// What must hold for every input.
#pragma once

#include <cstdio>
#include <cstdlib>

/// End the run, which keeps the input, when a fact does not hold.
inline void require(bool holds, const char* fact)
{
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", fact);
    std::abort();
}
