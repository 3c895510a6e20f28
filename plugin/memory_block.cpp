#include "plugin/memory_block.h"

#include "plugin/host_exceptions.h"
#include "plugin/owned.h"

#include <cstdio>
#include <cstring>
#include <new>

namespace {

OwnedMemoryBlock copyIntoNewBlock(const void* data, HostInteger size)
{
    OwnedMemoryBlock block(REALNewMemoryBlock(size));
    void* bytes = block ? REALMemoryBlockGetPtr(block.get()) : nullptr;
    if (!bytes) return nullptr;
    std::memcpy(bytes, data, static_cast<std::size_t>(size));
    return block;
}

} // namespace

REALmemoryBlockStruct* REALBuildMemoryblock(const void* data, long long size)
{
    if (!data || size <= 0) return nullptr;
    if (size < refusedBlockSize) {
        try {
            if (OwnedMemoryBlock block = copyIntoNewBlock(data, static_cast<HostInteger>(size)))
                return block.release();
        } catch (const std::bad_alloc&) { // failed allocation, reported below like a null block
        }
    }

    char message[200];
    std::snprintf(message, sizeof message, "Failed to allocate a memoryblock with %lld bytes in size.", size);
    RaiseException("OutOfMemoryException", message);
    return nullptr;
}
