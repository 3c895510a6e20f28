// The bytes of a host memory block, with a reference to the block.
#pragma once

#include "plugin/owned.h"
#include "plugin/services.h"

#include <algorithm>

namespace coreaudio {

/// Size and address of `block`; 0 and null if it is nil or has no memory. The view holds a reference.
/// [main]
class MemoryBlockView {
public:
    explicit MemoryBlockView(REALmemoryBlockStruct* block)
    {
        if (!block) return;
        REALLockObject(asObject(block));
        reference_.reset(block); // released also if the host throws below
        const HostInteger size = REALMemoryBlockGetSize(block);
        address_ = REALMemoryBlockGetPtr(block);
        if (address_) size_ = static_cast<std::uint32_t>(std::max<HostInteger>(size, 0));
    }

    std::uint32_t size() const { return size_; }
    void* address() const { return address_; }

private:
    OwnedMemoryBlock reference_;
    std::uint32_t size_ = 0;
    void* address_ = nullptr;
};

} // namespace coreaudio
