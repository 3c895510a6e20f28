// Ownership of memory from the C library's allocator.
#pragma once

#include <cstdlib>
#include <memory>

namespace kvxplatform {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

/// Freed with free().
template <class T>
using Freed = std::unique_ptr<T, FreeDeleter>;

} // namespace kvxplatform
