// Some of libsndfile's decoders print their doubts about a file, and offer no way to ask them not to.
#pragma once

#include <cstdio>

namespace kvx {

/// Nothing that goes through the C library's stdout and stderr is seen while one lives. The variables are
/// exchanged, not the descriptors: whatever other threads print past them stays. [main], which is the only
/// thread that prints here
class Quiet {
public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    std::FILE *out_, *error_; // as they were
};

} // namespace kvx
