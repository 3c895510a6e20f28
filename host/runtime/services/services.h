// The host functions that the plug-in calls; service_table.cpp has their names and versions.
//
// Owner    The caller owns one reference to a result. The callee gets no reference to an argument.
// Errors   A result that cannot be made is null. A dead address, and a value of the wrong kind, are noted as
//          misuses and count as nil.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <cstdint>
#include <functional>
#include <thread>

struct FSRef; ///< the platform's file reference

namespace host {

/// The state of the services for the current host.
struct ServiceState {
    std::thread::id mainThread = std::this_thread::get_id();
    std::int32_t registeredLayout = 0; ///< argument of "RegisterPluginVersion"; 0 before the call
    std::function<void()> yield;       ///< work of the program that "REALYieldToRB" runs
};

} // namespace host

namespace host::services {

// ---- the host itself ----
double version();
void registerPluginVersion(std::int32_t layout);
HostBoolean inRuntime();
void registerPluginClass(REALclassDefinition* definition);
void yield();

// ---- references ----
void lockObject(REALobjectStruct* object);
void unlockObject(REALobjectStruct* object);
void lockString(REALstringStruct* string);
void unlockString(REALstringStruct* string);

// ---- strings ----
REALstringStruct* buildString(const void* bytes, HostInteger count); ///< Make a string of unknown encoding.
REALstringStruct* buildStringWithEncoding(const void* bytes, HostInteger count, std::uint32_t encoding);
std::uint32_t stringEncoding(REALstringStruct* string);
void setStringEncoding(REALstringStruct* string, std::uint32_t encoding);
REALstringStruct* convertString(REALstringStruct* string, std::uint32_t encoding);
const char* stringBytes(REALstringStruct* string);
HostInteger stringLength(REALstringStruct* string); ///< The host's method LenB: the length in bytes.
HostBoolean stringData(REALstringStruct* string, std::uint32_t encoding, REALstringData* data);
void disposeStringData(REALstringData* data);

// ---- memory blocks ----
REALmemoryBlockStruct* newMemoryBlock(HostInteger size);
void* memoryBlockBytes(REALmemoryBlockStruct* block);
HostInteger memoryBlockSize(REALmemoryBlockStruct* block);

// ---- arrays ----
/// Make an array of Integer elements. `elementCode` is 0, the only code that plug-ins use.
REALarrayStruct* newArray(HostInteger elementCode, HostInteger upperBound);
HostInteger upperBound(REALarrayStruct* array); ///< The upper bound; -1 for nil.
// Each of the following functions returns a C function: a getter (array, index), or an inserter (array,
// index, element).
AnyFunction integerInserter(REALarrayStruct* array);
AnyFunction integerGetter(REALarrayStruct* array);
AnyFunction singleGetter(REALarrayStruct* array);
AnyFunction doubleGetter(REALarrayStruct* array);
AnyFunction directInserter(REALarrayStruct* array); ///< The function for the array's own element type.
AnyFunction directGetter(REALarrayStruct* array);   ///< The function for the array's own element type.

// ---- objects ----
REALobjectStruct* newInstance(const char* className);
REALobjectStruct* variantFromString(REALstringStruct* string);
REALobjectStruct* variantFromInteger(HostInteger value);
REALobjectStruct* variantFromInt32(HostInteger value);
void setStringProperty(REALobjectStruct* object, const char* name, REALstringStruct* value);
void setIntegerProperty(REALobjectStruct* object, const char* name, HostInteger value);
AnyFunction objectMethod(REALobjectStruct* object, const char* declaration);
AnyFunction globalMethod(const void* none, const char* declaration);
AnyFunction eventInstance(REALobjectStruct* object, Word systemUse);
void raiseException(REALobjectStruct* exception);
HostBoolean folderReference(REALfolderItemStruct* item, FSRef* reference, void* name);

} // namespace host::services
