#include "host/runtime/values/reference.h"

#include "host/runtime/state.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>

namespace host {

namespace {

constexpr const char* kindNames[] = {
    "object", "string", "memory block", "array", "folder item", "variant", "string data",
};

void finishStringData(StringDataRecord& data)
{
    std::free(data.copy);
    data.~StringDataRecord();
}

void finish(void* value, Kind kind)
{
    switch (kind) {
    case Kind::object:
        return finishObject(static_cast<REALobjectStruct*>(value));
    case Kind::string:
        return finishString(*record<StringRecord>(value));
    case Kind::memoryBlock:
        return finishMemoryBlock(*record<MemoryBlockRecord>(value));
    case Kind::array:
        return finishArray(*record<ArrayRecord>(value));
    case Kind::folderItem:
        return record<FolderItemRecord>(value)->~FolderItemRecord();
    case Kind::variant:
        return record<VariantRecord>(value)->~VariantRecord();
    case Kind::stringData:
        return finishStringData(*record<StringDataRecord>(value));
    }
}

} // namespace

const char* kindName(Kind kind) { return kindNames[static_cast<std::size_t>(kind)]; }

void* allocateValue(Kind kind, std::size_t size)
{
    auto& live = state().live;
    const std::size_t bytes = roundUpToAlignment(sizeof(ValueHeader) + size);
    void* memory = std::aligned_alloc(alignof(ValueHeader), bytes);
    if (!memory) return nullptr;
    std::memset(memory, 0, bytes);
    auto* header = new (memory) ValueHeader{kind, 1};
    live.insert(header + 1);
    return header + 1;
}

bool isLive(const void* value)
{
    auto* host = stateOrNull();
    return host && host->live.count(value) != 0;
}

Kind kindOf(const void* value)
{
    if (!isLive(value)) throw ProgramError(fmt::format("{} is not the address of a live host value", value));
    return headerOf(value)->kind;
}

void retain(const void* value)
{
    if (!value || !stateOrNull()) return;
    if (isLive(value))
        ++headerOf(value)->references;
    else
        noteMisuse(fmt::format("a reference was added to {}, which is no live host value", value));
}

void release(const void* value)
{
    auto* host = stateOrNull();
    if (!value || !host) return;
    if (!isLive(value)) {
        noteMisuse(fmt::format("a reference to {} was dropped, which is no live host value", value));
        return;
    }
    auto* header = headerOf(value);
    const bool isDying = header->kind == Kind::object && record<ObjectRecord>(value)->isDying;
    if (isDying && header->references == 1) {
        noteMisuse("a destructor dropped a reference to its object that it did not hold");
        return;
    }
    if (header->references > 1) {
        --header->references;
        return;
    }
    finish(const_cast<void*>(value), header->kind);
    host->live.erase(value);
    std::free(header);
}

std::size_t referenceCount(const void* value) { return isLive(value) ? headerOf(value)->references : 0; }

void* liveValue(const void* value, Kind kind, const char* service)
{
    if (!value) return nullptr;
    if (!isLive(value)) {
        noteMisuse(fmt::format("{} was given {}, which is no live host value", service, value));
        return nullptr;
    }
    if (headerOf(value)->kind != kind) {
        noteMisuse(fmt::format("{} was given a value of kind {} where it takes one of kind {}", service,
                               kindName(headerOf(value)->kind), kindName(kind)));
        return nullptr;
    }
    return const_cast<void*>(value);
}

void abandonValue(const void* value)
{
    auto* header = headerOf(value);
    switch (header->kind) {
    case Kind::object:
        delete record<ObjectRecord>(value)->handlers;
        break;
    case Kind::string:
        finishString(*record<StringRecord>(value));
        break;
    case Kind::memoryBlock:
        finishMemoryBlock(*record<MemoryBlockRecord>(value));
        break;
    case Kind::array:
        std::free(record<ArrayRecord>(value)->storage);
        break;
    case Kind::folderItem:
        record<FolderItemRecord>(value)->~FolderItemRecord();
        break;
    case Kind::variant:
        record<VariantRecord>(value)->~VariantRecord();
        break;
    case Kind::stringData:
        finishStringData(*record<StringDataRecord>(value));
        break;
    }
    std::free(header);
}

} // namespace host
