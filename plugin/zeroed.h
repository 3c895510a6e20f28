// Owned, zero-filled memory from the C allocator.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

template <class T>
using Zeroed = std::unique_ptr<T[], FreeMemory>;

/// Largest allocation in bytes, because the host counts bytes in signed 32 bits.
constexpr std::int64_t largestAllocation = 0x7FFFFFFF;

/// Allocate `count` elements filled with zero bytes.
/// Errors  no memory, no elements, or more than `largestAllocation` bytes: returns null without an exception.
/// [any]
template <class T>
Zeroed<T> allocateZeroed(std::int64_t count)
{
    if (count < 1 || count > largestAllocation / static_cast<std::int64_t>(sizeof(T))) return nullptr;
    return Zeroed<T>(static_cast<T*>(std::calloc(static_cast<std::size_t>(count), sizeof(T))));
}
