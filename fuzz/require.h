// The assertion of the fuzz targets.
#pragma once

#include <cstdio>
#include <cstdlib>

/// Abort the run if a fact does not hold. libFuzzer then stores the input.
inline void require(bool holds, const char* fact)
{
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", fact);
    std::abort();
}
