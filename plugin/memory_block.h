// Host memory blocks from our own bytes.
#pragma once

#include "abi/host_values.h"

/// From this size on the host cannot count a block's bytes.
constexpr long long refusedBlockSize = 0x7FFFFFFF;

/// A new memory block with a copy of `size` bytes of `data`, or null.
/// Owner   the caller holds one reference, usually handed to the host as a result.
/// Errors  no data or a size below 1: null, nothing raised. No memory, or a size of `refusedBlockSize` or
///         more, for which neither `data` nor the host is asked: raises "OutOfMemoryException", returns null.
/// Thread  [main].
REALmemoryBlockStruct* REALBuildMemoryblock(const void* data, long long size);
