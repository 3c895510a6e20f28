// The host functions that implement the services. service_table.cpp lists the services by name.
//
// Owner    The plug-in owns one reference to each result, and keeps its references to the arguments.
// Errors   A function returns null if it cannot make its result. A dead address and a value of another kind
//          are noted as misuses and treated as nil.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <cstdint>
#include <functional>
#include <thread>

struct FSRef; ///< the platform's file reference

namespace host {

/// The state that the services keep for the current host.
struct ServiceState {
    std::thread::id mainThread = std::this_thread::get_id();
    std::int32_t registeredLayout =
        0;                       ///< class layout that the plug-in passed to "RegisterPluginVersion", else 0
    std::function<void()> yield; ///< function of the program that "REALYieldToRB" runs
};

} // namespace host

namespace host::services {

// ---- the host ----
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
REALstringStruct* buildString(const void* bytes, HostInteger count); ///< Make a string with encodingUnknown.
REALstringStruct* buildStringWithEncoding(const void* bytes, HostInteger count, std::uint32_t encoding);
std::uint32_t stringEncoding(REALstringStruct* string);
void setStringEncoding(REALstringStruct* string, std::uint32_t encoding);
REALstringStruct* convertString(REALstringStruct* string, std::uint32_t encoding);
const char* stringBytes(REALstringStruct* string);
HostInteger
stringLength(REALstringStruct* string); ///< Return the length in bytes; this is the global method LenB.
HostBoolean stringData(REALstringStruct* string, std::uint32_t encoding, REALstringData* data);
void disposeStringData(REALstringData* data);

// ---- memory blocks ----
REALmemoryBlockStruct* newMemoryBlock(HostInteger size);
void* memoryBlockBytes(REALmemoryBlockStruct* block);
HostInteger memoryBlockSize(REALmemoryBlockStruct* block);

// ---- arrays ----
/// Make an array of Integer elements. `elementCode` must be 0, because plug-ins use no other code.
REALarrayStruct* newArray(HostInteger elementCode, HostInteger upperBound);
HostInteger upperBound(REALarrayStruct* array); ///< Return the index of the last element; -1 for nil.
// Each following function returns a C function for the plug-in: a getter (array, index), which returns an
// element, or an inserter (array, index, element).
AnyFunction integerInserter(REALarrayStruct* array);
AnyFunction integerGetter(REALarrayStruct* array);
AnyFunction singleGetter(REALarrayStruct* array);
AnyFunction doubleGetter(REALarrayStruct* array);
AnyFunction directInserter(REALarrayStruct* array); ///< Return the inserter for the array's element type.
AnyFunction directGetter(REALarrayStruct* array);   ///< Return the getter for the array's element type.

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
