// Memory blocks: a fixed number of bytes that host and plug-in read and write.
#pragma once

#include "abi/host_values.h"
#include "host/runtime/values/reference.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace host {

/// Shape   Zero-filled at first; a size of 0 is allowed. The storage has exactly the size of the block and an
///         alignment of 16.
/// Thread  Making, copying and dropping: [main]. The bytes: [any].
class MemoryBlock : public Ref<REALmemoryBlockStruct> {
public:
    static constexpr Kind kind = Kind::memoryBlock;
    using Ref::Ref;
    MemoryBlock(Ref<REALmemoryBlockStruct> ref) : Ref(std::move(ref)) {}

    /// Make a block of `size` bytes; nil if `size` is negative or there is no memory.
    static MemoryBlock ofSize(std::int64_t size);

    /// Make a block with a copy of the bytes; nil if there is no memory.
    static MemoryBlock copyOf(const void* bytes, std::size_t size);
    template <class T>
    static MemoryBlock copyOf(const std::vector<T>& items)
    {
        return copyOf(items.data(), items.size() * sizeof(T));
    }

    std::uint8_t* data() const; ///< address of the bytes; null for nil and for a size of 0
    std::size_t size() const;   ///< number of bytes; 0 for nil

    template <class T>
    T* as() const
    {
        return reinterpret_cast<T*>(data());
    }
    std::string_view bytes() const { return {as<const char>(), size()}; }
};

} // namespace host
