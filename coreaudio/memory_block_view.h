// A host memory block's bytes, with the block kept alive.
#pragma once

#include "plugin/owned.h"
#include "plugin/services.h"

#include <algorithm>

namespace coreaudio {

/// Size and address of `block`, locked as long as this lives; 0 and null for a block that is nil or has no
/// memory.
class MemoryBlockView {
public:
    explicit MemoryBlockView(REALmemoryBlockStruct* block)
    {
        if (!block) return;
        REALLockObject(asObject(block));
        lock_.reset(block); // from here on, also if the host throws below
        const HostInteger size = REALMemoryBlockGetSize(block);
        address_ = REALMemoryBlockGetPtr(block);
        if (address_) size_ = static_cast<std::uint32_t>(std::max<HostInteger>(size, 0));
    }

    std::uint32_t size() const { return size_; }
    void* address() const { return address_; }

private:
    OwnedMemoryBlock lock_;
    std::uint32_t size_ = 0;
    void* address_ = nullptr;
};

} // namespace coreaudio
