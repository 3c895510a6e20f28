#include "host/runtime/values/memory_block.h"

#include "host/runtime/host.h"
#include "host/runtime/values/records.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace host {

MemoryBlock MemoryBlock::ofSize(std::int64_t size)
{
    Host::current(); // throws before anything is taken
    if (size < 0 || size > std::numeric_limits<std::int32_t>::max()) return {};
    // Exactly as long as asked, so that an access behind the end is seen by the address sanitizer.
    const auto count = static_cast<std::size_t>(size);
    auto* data = count > 0 ? static_cast<std::uint8_t*>(std::calloc(count, 1)) : nullptr;
    if (count > 0 && !data) return {};
    auto* block = makeValue<MemoryBlockRecord>(Kind::memoryBlock);
    if (!block) {
        std::free(data);
        return {};
    }
    block->data = data;
    block->size = count;
    return MemoryBlock(adopt(reinterpret_cast<REALmemoryBlockStruct*>(block)));
}

MemoryBlock MemoryBlock::copyOf(const void* bytes, std::size_t size)
{
    auto block = ofSize(static_cast<std::int64_t>(size));
    if (block && size > 0) std::memcpy(block.data(), bytes, size);
    return block;
}

void finishMemoryBlock(MemoryBlockRecord& block) { std::free(block.data); }

std::uint8_t* MemoryBlock::data() const { return get() ? record<MemoryBlockRecord>(get())->data : nullptr; }

std::size_t MemoryBlock::size() const { return get() ? record<MemoryBlockRecord>(get())->size : 0; }

} // namespace host
