// Host memory blocks from our own bytes.
#pragma once

#include "abi/host_values.h"

/// A new memory block with a copy of `size` bytes of `data`, or null.
/// Owner   the caller holds one reference, usually handed to the host as a result.
/// Errors  no data or a size below 1: null, nothing raised. A size of 0x7FFFFFFF or more, or no memory:
///         raises "OutOfMemoryException" and returns null.
/// Thread  [main].
REALmemoryBlockStruct* REALBuildMemoryblock(const void* data, long long size);
