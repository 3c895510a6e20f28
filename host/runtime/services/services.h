// The functions behind the services, as the plug-in calls them. The service table has their names; the
// contracts:
//   - what makes a value returns it with one reference, which the caller owns; null where it cannot be made;
//   - arguments are lent;
//   - a dead value, or one of another kind, is noted as a misuse and otherwise taken for nil.
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <cstdint>

struct FSRef; ///< the platform's file reference: 80 bytes that only the platform reads

namespace host::services {

using Boolean8 = std::uint8_t;

// ---- the host itself ----
double version();
void registerPluginVersion(std::int32_t layout);
Boolean8 inRuntime();
void registerPluginClass(REALclassDefinition* definition);
void yield();

// ---- references ----
void lockObject(REALobjectStruct* object);
void unlockObject(REALobjectStruct* object);
void lockString(REALstringStruct* string);
void unlockString(REALstringStruct* string);

// ---- strings ----
REALstringStruct* buildString(const void* bytes, HostInteger count); ///< marked with no encoding
REALstringStruct* buildStringWithEncoding(const void* bytes, HostInteger count, std::uint32_t encoding);
std::uint32_t stringEncoding(REALstringStruct* string);
void setStringEncoding(REALstringStruct* string, std::uint32_t encoding);
REALstringStruct* convertString(REALstringStruct* string, std::uint32_t encoding);
const char* stringBytes(REALstringStruct* string);
HostInteger stringLength(REALstringStruct* string); ///< the host's own method LenB
Boolean8 stringData(REALstringStruct* string, std::uint32_t encoding, REALstringData* data);
void disposeStringData(REALstringData* data);

// ---- memory blocks ----
REALmemoryBlockStruct* newMemoryBlock(HostInteger size);
void* memoryBlockBytes(REALmemoryBlockStruct* block);
HostInteger memoryBlockSize(REALmemoryBlockStruct* block);

// ---- arrays ----
REALarrayStruct* newArray(HostInteger elementCode, HostInteger upperBound);
HostInteger upperBound(REALarrayStruct* array); ///< -1 for nil
AnyFunction integerInserter(REALarrayStruct* array);
AnyFunction integerGetter(REALarrayStruct* array);
AnyFunction singleGetter(REALarrayStruct* array);
AnyFunction doubleGetter(REALarrayStruct* array);
AnyFunction directInserter(REALarrayStruct* array); ///< for whatever the elements are
AnyFunction directGetter(REALarrayStruct* array);

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
Boolean8 folderReference(REALfolderItemStruct* item, FSRef* reference, void* name);

} // namespace host::services
