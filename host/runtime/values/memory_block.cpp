#include "host/runtime/values/memory_block.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>
#include <limits>

namespace host {

namespace {

struct MemoryBlockRecord {
    std::uint8_t* data;
    std::size_t size;
};

void destroyBlock(void* block) { std::free(record<MemoryBlockRecord>(block)->data); }

std::string printBlock(const void* block)
{
    return fmt::format("a memory block of {} bytes", record<MemoryBlockRecord>(block)->size);
}

Cost costOfBlock(const void*, const Type& type)
{
    if (type.isArray) return {};
    if (type.base == Base::memoryBlock) return cost::exact;
    return type.base == Base::pointer || isAnyObject(type) ? Cost(cost::converted) : Cost();
}

constexpr KindRow blockRow = {Kind::memoryBlock, destroyBlock, nullptr, printBlock, costOfBlock};

} // namespace

MemoryBlock MemoryBlock::ofSize(std::int64_t size)
{
    if (size < 0 || size > std::numeric_limits<std::int32_t>::max()) return {};
    auto* record = makeValue<MemoryBlockRecord>(blockRow);
    if (!record) return {};
    MemoryBlock block(adopt(reinterpret_cast<REALmemoryBlockStruct*>(record)));
    if (size == 0) return block;
    // The storage has no spare byte, so that the address sanitizer finds an access past the end.
    record->data = static_cast<std::uint8_t*>(std::calloc(static_cast<std::size_t>(size), 1));
    if (!record->data) return {};
    record->size = static_cast<std::size_t>(size);
    return block;
}

MemoryBlock MemoryBlock::copyOf(const void* bytes, std::size_t size)
{
    auto block = ofSize(static_cast<std::int64_t>(size));
    if (block && size > 0) std::memcpy(block.data(), bytes, size);
    return block;
}

std::uint8_t* MemoryBlock::data() const { return get() ? record<MemoryBlockRecord>(get())->data : nullptr; }

std::size_t MemoryBlock::size() const { return get() ? record<MemoryBlockRecord>(get())->size : 0; }

} // namespace host
