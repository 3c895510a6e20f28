// Counted host values: memory, reference counts, and the functions of each kind of value. A value's handle,
// the address that the plug-in gets, is the address of the kind's record. A ValueHeader precedes the record.
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

/// The functions of one kind of value; the source file of each kind defines one row.
struct KindRow {
    Kind kind;
    /// Destroy the record and release its references. The caller frees the memory of the record itself.
    void (*destroy)(void* record);
    /// Describe the value for messages, with an article; null: "a" and the name of the kind.
    std::string (*describe)(const void* record);
    /// Print the value as a program prints it; null: the same text as `describe`.
    std::string (*print)(const void* record);
    /// The cost of passing the value as a type other than Variant; null: the value fits no other type.
    Cost (*cost)(const void* record, const Type& type);
};

struct alignas(16) ValueHeader {
    const KindRow* row;
    std::size_t references;
    bool isBeingDestroyed; ///< true while `destroy` runs; references are still counted then
};

/// The live values of the current host. ~LiveValues frees the remaining values after the host has ended, so
/// that no destructor of the plug-in runs.
struct LiveValues {
    std::unordered_set<const void*> addresses;
    ~LiveValues();
};

/// Round a size up to the alignment of headers, records and class data.
constexpr std::size_t roundUpToAlignment(std::size_t size)
{
    return (size + alignof(ValueHeader) - 1) / alignof(ValueHeader) * alignof(ValueHeader);
}

inline ValueHeader* headerOf(const void* value)
{
    return static_cast<ValueHeader*>(const_cast<void*>(value)) - 1;
}

/// Allocate zeroed memory for a header and a record of `size` bytes. The value has one reference.
/// Throws   ProgramError without a host.
/// Returns  the address of the record; null if there is no memory.
void* allocateValue(const KindRow& row, std::size_t size);

/// Allocate a value and construct its record. Errors and result as in allocateValue.
template <class Record>
Record* makeValue(const KindRow& row)
{
    void* memory = allocateValue(row, sizeof(Record));
    return memory ? new (memory) Record{} : nullptr;
}

/// The record at a value's address.
template <class Record>
Record* record(const void* value)
{
    return static_cast<Record*>(const_cast<void*>(value));
}

/// Whether `value` is the address of a live host value.
bool isLive(const void* value);

/// The kind of a live value. Throws ProgramError for any other address.
Kind kindOf(const void* value);

/// Add a reference to a value. Nil stays nil; a dead address is noted as a misuse and has no other effect.
void retain(const void* value);

/// Drop a reference to a value; the value is destroyed with its last reference. Nil and dead
/// addresses have the same effect as in retain.
void release(const void* value);

/// The number of references to a live value; 0 for nil and for dead addresses.
std::size_t referenceCount(const void* value);

/// Check an argument of a service: `value` if it is a live value of that kind, otherwise null. A dead address
/// and a value of another kind are noted as misuses of `service`.
void* checkedValue(const void* value, Kind kind, const char* service);

} // namespace host
