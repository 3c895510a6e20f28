// Host memory blocks built from bytes.
#pragma once

#include "abi/host_values.h"

/// Smallest size in bytes that is too large for a host memory block.
constexpr long long refusedBlockSize = 0x7FFFFFFF;

/// Build a memory block with a copy of the `size` bytes at `data`.
/// Owner   the caller owns one reference, which it usually returns to the host.
/// Errors  null `data` or a `size` below 1: returns null without a host exception. Exhausted memory or a
///         `size` that is too large for the host: returns null and raises "OutOfMemoryException". If `size`
///         is too large, `data` is not read.
/// [main]
REALmemoryBlockStruct* REALBuildMemoryblock(const void* data, long long size);
