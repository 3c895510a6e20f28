// The assertion of the fuzz targets.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Abort the program if `fact` does not hold. libFuzzer then stores the input of the failed run.
inline void require(bool holds, const char* fact)
{
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", fact);
    std::abort();
}
