// Ownership of memory that the C library allocated.
#pragma once

#include <cstdlib>
#include <memory>

namespace kvxplatform {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};

/// An owning pointer that frees its memory with free().
template <class T>
using Freed = std::unique_ptr<T, FreeDeleter>;

} // namespace kvxplatform
