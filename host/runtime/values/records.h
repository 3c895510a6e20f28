// The records behind the handles, for the runtime's own files. Each stands behind a ValueHeader; the handle
// that the plug-in gets is the record's address, and its first words are the ones that the plug-in may read.
#pragma once

#include "abi/host_values.h"
#include "host/runtime/calls/object.h"
#include "host/runtime/classes/class_info.h"
#include "host/runtime/values/reference.h"
#include "host/runtime/values/type.h"

#include <cstdint>
#include <map>
#include <new>
#include <string>

namespace host {

struct EventBinding;

struct alignas(16) ValueHeader {
    Kind kind;
    std::size_t references;
};

struct StringRecord {
    REALstringStruct visible; ///< what it says, or poison
    char* buffer;             ///< one unused byte, the bytes, zeros
    std::size_t length;
    std::uint32_t encoding;
};

struct MemoryBlockRecord {
    std::uint8_t* data;
    std::size_t size;
};

struct ArrayRecord {
    REALarrayStruct visible; ///< likewise
    Type element;
    std::uint8_t* storage;
    std::size_t count;
};

struct FolderItemRecord {
    std::string path;
};

struct VariantRecord {
    Value value;
};

/// Text on loan to the plug-in, until it is disposed of.
struct StringDataRecord {
    Ref<REALstringStruct> text;
    char* copy; ///< bytes of its own, ended by something that is not zero; or null
};

/// The class data of each class follows, at the offsets that registration gave out.
struct ObjectRecord {
    const ClassInfo* info;
    bool isDying; ///< its destructors run: references are counted, but nothing is destroyed a second time
    std::map<const EventBinding*, EventHandler>* handlers;
};

/// Where class data may begin.
constexpr std::size_t dataAlignment = 16;
constexpr std::size_t roundUpToAlignment(std::size_t size)
{
    return (size + dataAlignment - 1) / dataAlignment * dataAlignment;
}

/// Zeroed memory for a header and a record of `size` bytes, with one reference; null if there is no memory.
void* allocateValue(Kind kind, std::size_t size);

template <class Record>
Record* makeValue(Kind kind)
{
    void* memory = allocateValue(kind, sizeof(Record));
    return memory ? new (memory) Record{} : nullptr;
}

inline ValueHeader* headerOf(const void* value)
{
    return reinterpret_cast<ValueHeader*>(const_cast<void*>(value)) - 1;
}

/// The record of a live value of that kind. Null for nil, dead addresses and other kinds; the latter two are
/// noted as the misuse of `service` (a service's name).
void* liveValue(const void* value, Kind kind, const char* service);

template <class Record>
Record* record(const void* value)
{
    return static_cast<Record*>(const_cast<void*>(value));
}

// What each file frees when the last reference goes, but for the block itself.
void finishString(StringRecord& string);
void finishMemoryBlock(MemoryBlockRecord& block);
void finishArray(ArrayRecord& array);
void finishObject(REALobjectStruct* object); ///< runs the destructors

/// Free a value without running destructors and without touching what it refers to.
void abandonValue(const void* value);

/// What stands in the words of records that may not be read: an address that faults, and an impossible
/// length.
constexpr Word poisonWord = static_cast<Word>(0xBAD0BAD1);
constexpr HostInteger poisonLength = -1;

} // namespace host
