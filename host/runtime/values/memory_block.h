// Memory blocks: a fixed number of bytes that host and plug-in both read and write.
#pragma once

#include "host/runtime/values/reference.h"

#include <cstdint>
#include <string_view>
#include <vector>

struct REALmemoryBlockStruct;

namespace host {

/// Shape   zero-filled at first; 0 bytes are allowed. The storage is exactly as long as the block and aligned
/// to 16. Thread  creation and references [main]; the bytes [any]
class MemoryBlock : public Ref<REALmemoryBlockStruct> {
public:
    using Ref::Ref;
    MemoryBlock(Ref<REALmemoryBlockStruct> ref) : Ref(std::move(ref)) {}

    /// A new block, or nil if `size` is negative or the memory is not there.
    static MemoryBlock ofSize(std::int64_t size);
    static MemoryBlock copyOf(const void* bytes, std::size_t size);
    template <class T>
    static MemoryBlock copyOf(const std::vector<T>& items)
    {
        return copyOf(items.data(), items.size() * sizeof(T));
    }

    /// Null for nil and for a block of 0 bytes.
    std::uint8_t* data() const;
    std::size_t size() const; ///< bytes; 0 for nil

    template <class T>
    T* as() const
    {
        return reinterpret_cast<T*>(data());
    }
    std::string_view bytes() const { return {as<const char>(), size()}; }
};

} // namespace host
