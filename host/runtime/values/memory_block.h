// Memory blocks: a fixed number of bytes that the host and the plug-in read and write.
#pragma once

#include "abi/host_values.h"
#include "host/runtime/values/reference.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace host {

/// A reference to a memory block, or nil. The bytes may be read and written on any thread.
/// Shape  size() bytes, zero at first and 16-aligned, without spare bytes at the end; size() may be 0.
/// [main]
class MemoryBlock : public Ref<REALmemoryBlockStruct> {
public:
    static constexpr Kind kind = Kind::memoryBlock;
    using Ref::Ref;
    MemoryBlock(Ref<REALmemoryBlockStruct> ref) : Ref(std::move(ref)) {}

    /// Make a block of `size` bytes; nil if `size` is negative, above 2^31 - 1, or too large for the memory.
    static MemoryBlock ofSize(std::int64_t size);

    /// Make a block with a copy of the bytes; nil in the cases of ofSize().
    static MemoryBlock copyOf(const void* bytes, std::size_t size);
    template <class T>
    static MemoryBlock copyOf(const std::vector<T>& items)
    {
        return copyOf(items.data(), items.size() * sizeof(T));
    }

    std::uint8_t* data() const; ///< address of the bytes; null if the block is nil or has a size of 0
    std::size_t size() const;   ///< number of bytes; 0 if the block is nil

    template <class T>
    T* as() const
    {
        return reinterpret_cast<T*>(data());
    }
    std::string_view bytes() const { return {as<const char>(), size()}; }
};

} // namespace host
