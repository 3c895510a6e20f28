// Zero-filled memory of the C allocator, owned. Sizes are bytes and must lie in 1 … 2^31 − 1, as the host
// counts in signed 32 bits; any other size is refused like a failed allocation: null, nothing raised.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

template <class T>
using Zeroed = std::unique_ptr<T[], FreeMemory>;

constexpr std::int64_t largestAllocation = 0x7FFFFFFF;

/// `count` zeroed elements, or null.
template <class T>
Zeroed<T> allocateZeroed(std::int64_t count)
{
    if (count < 1 || count > largestAllocation / static_cast<std::int64_t>(sizeof(T))) return nullptr;
    return Zeroed<T>(static_cast<T*>(std::calloc(static_cast<std::size_t>(count), sizeof(T))));
}
