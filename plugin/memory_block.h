// Host memory blocks built from bytes.
#pragma once

#include "abi/host_values.h"

/// The smallest size in bytes that the host cannot store in a memory block.
constexpr long long refusedBlockSize = 0x7FFFFFFF;

/// A new memory block with a copy of `size` bytes of `data`, or null.
/// Owner   the caller has one reference, which it usually returns to the host.
/// Errors  null data or a size below 1: null, no host exception. Out of memory, or a size that the host
///         cannot store: null and "OutOfMemoryException"; such a size is refused before `data` is read.
/// [main]
REALmemoryBlockStruct* REALBuildMemoryblock(const void* data, long long size);
