#include "host/runtime/values/counted.h"

#include "host/runtime/support/misuse.h"
#include "host/runtime/support/per_host.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>

namespace host {

const char* kindName(Kind kind)
{
    constexpr const char* names[] = {
        "object", "string", "memory block", "array", "folder item", "variant", "string data",
    };
    return names[static_cast<std::size_t>(kind)];
}

LiveValues::~LiveValues()
{
    for (const void* value : addresses) {
        headerOf(value)->row->destroy(const_cast<void*>(value));
        std::free(headerOf(value));
    }
}

void* allocateValue(const KindRow& row, std::size_t size)
{
    auto& live = stateOf<LiveValues>();
    const std::size_t bytes = roundUpToAlignment(sizeof(ValueHeader) + size);
    void* memory = std::aligned_alloc(alignof(ValueHeader), bytes);
    if (!memory) return nullptr;
    std::memset(memory, 0, bytes);
    auto* header = new (memory) ValueHeader{&row, 1, false};
    live.addresses.insert(header + 1);
    return header + 1;
}

bool isLive(const void* value)
{
    const auto* live = stateOrNull<LiveValues>();
    return live && live->addresses.count(value) != 0;
}

Kind kindOf(const void* value)
{
    if (!isLive(value)) throw ProgramError(fmt::format("{} is not the address of a live host value", value));
    return headerOf(value)->row->kind;
}

void retain(const void* value)
{
    if (!value || !stateOrNull<LiveValues>()) return;
    if (isLive(value))
        ++headerOf(value)->references;
    else
        noteMisuse(fmt::format("a reference was added to {}, which is not a live host value", value));
}

void release(const void* value)
{
    auto* live = stateOrNull<LiveValues>();
    if (!value || !live) return;
    if (!isLive(value))
        return noteMisuse(
            fmt::format("a reference to {} was dropped, which is not a live host value", value));
    ValueHeader* header = headerOf(value);
    if (header->references > 1) {
        --header->references;
        return;
    }
    if (header->isBeingDestroyed)
        return noteMisuse("a destructor dropped a reference to its object that it did not hold");
    header->isBeingDestroyed = true;
    header->row->destroy(const_cast<void*>(value));
    live->addresses.erase(value);
    std::free(header);
}

std::size_t referenceCount(const void* value) { return isLive(value) ? headerOf(value)->references : 0; }

void* checkedValue(const void* value, Kind kind, const char* service)
{
    if (!value) return nullptr;
    if (!isLive(value)) {
        noteMisuse(fmt::format("{} was given {}, which is not a live host value", service, value));
        return nullptr;
    }
    const Kind found = headerOf(value)->row->kind;
    if (found == kind) return const_cast<void*>(value);
    noteMisuse(fmt::format("{} was given a value of kind {}, but takes one of kind {}", service,
                           kindName(found), kindName(kind)));
    return nullptr;
}

} // namespace host
