// A view of the bytes of a host memory block. The view holds a reference to the block.
#pragma once

#include "plugin/owned.h"
#include "plugin/services.h"

#include <algorithm>

namespace coreaudio {

/// Size and address of the bytes of `block`; 0 and null if `block` is nil or has no memory. The view holds a
/// reference to `block`.
/// [main]
class MemoryBlockView {
public:
    explicit MemoryBlockView(REALmemoryBlockStruct* block)
    {
        if (!block) return;
        REALLockObject(asObject(block));
        reference_.reset(block); // reference that is released even if a host service below throws
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
