// Counted host values: memory, reference counts, and the functions for each kind of value. In memory, a value
// is a ValueHeader and a record whose type depends on the kind. The plug-in gets the address of the record.
// All functions: [main].
#pragma once

#include "host/runtime/values/type.h"

#include <cstddef>
#include <new>
#include <string>
#include <unordered_set>

namespace host {

/// The kinds of counted values. A stringData value keeps the text that "PluginGetStringData" returned.
enum class Kind { object, string, memoryBlock, array, folderItem, variant, stringData };

/// The name of a kind: "object", "string", "memory block", …
const char* kindName(Kind kind);

/// The functions for one kind of value. The source file of each kind defines one KindRow.
struct KindRow {
    Kind kind;
    /// Destroy the record of a value and release its references. The caller frees the value's memory.
    void (*destroy)(void* record);
    /// Describe a value for messages, with an article. If null, the text is "a" and the name of the kind.
    std::string (*describe)(const void* record);
    /// Return the value as the command and tests print it. If this pointer is null, `describe` is used.
    std::string (*print)(const void* record);
    /// The cost to pass a value as a type other than Variant. If null, the value fits no other type.
    Cost (*cost)(const void* record, const Type& type);
};

struct alignas(16) ValueHeader {
    const KindRow* row;
    std::size_t references;
    bool isBeingDestroyed; ///< true while KindRow::destroy runs, which may still add and drop references
};

/// The live values of the current host. The destructor frees values that still live, without running
/// destructors of the plug-in.
struct LiveValues {
    std::unordered_set<const void*> addresses;
    ~LiveValues();
};

/// Round a size up to a multiple of 16, the alignment of headers, records and class data.
constexpr std::size_t roundUpToAlignment(std::size_t size)
{
    return (size + alignof(ValueHeader) - 1) / alignof(ValueHeader) * alignof(ValueHeader);
}

inline ValueHeader* headerOf(const void* value)
{
    return static_cast<ValueHeader*>(const_cast<void*>(value)) - 1;
}

/// Allocate a value: zeroed memory for a header and a record of `size` bytes. The caller owns one reference.
/// Returns  the address of the record; null if there is no memory.
/// Errors   ProgramError if no host exists.
void* allocateValue(const KindRow& row, std::size_t size);

/// Allocate a value and construct its record. Result and errors are those of allocateValue().
template <class Record>
Record* makeValue(const KindRow& row)
{
    void* memory = allocateValue(row, sizeof(Record));
    return memory ? new (memory) Record{} : nullptr;
}

/// The record of a value, given the value's address.
template <class Record>
Record* record(const void* value)
{
    return static_cast<Record*>(const_cast<void*>(value));
}

/// Whether `value` is the address of a live value of the current host.
bool isLive(const void* value);

/// The kind of a live value. Throws ProgramError for any other address.
Kind kindOf(const void* value);

/// Add a reference to a value. Null has no effect; a dead address has no effect but is noted as a misuse.
void retain(const void* value);

/// Drop a reference to a value, and destroy the value with the last reference. Null has no effect; a dead
/// address has no effect but is noted as a misuse.
void release(const void* value);

/// The number of references to a live value; 0 for null and for a dead address.
std::size_t referenceCount(const void* value);

/// Check an argument of a service: return `value` if it is a live value of kind `kind`, else null. A dead
/// address and a value of another kind are noted as misuses of `service`.
void* checkedValue(const void* value, Kind kind, const char* service);

} // namespace host
