// The memory of an object: a ValueHeader, an ObjectRecord, then the class data of its class and superclasses.
// The class data of a class starts at ClassInfo::dataOffset from the address of the record.
#pragma once

#include "host/runtime/classes/class_info.h"
#include "host/runtime/values/counted.h"

#include <cstddef>

struct REALobjectStruct;

namespace host {

struct EventHandlers; ///< the handlers that a program attached to the events of one object

struct ObjectRecord {
    const ClassInfo* info; ///< class of the object
    EventHandlers* handlers;
};

/// The class of a live object.
/// [main]
inline const ClassInfo& classOf(const void* object) { return *record<ObjectRecord>(object)->info; }

/// The offset of class data that directly follows the ObjectRecord.
constexpr std::size_t firstDataOffset = roundUpToAlignment(sizeof(ObjectRecord));

/// The address of the class data of class `info` in an object.
inline char* classDataOf(REALobjectStruct* object, const ClassInfo& info)
{
    return reinterpret_cast<char*>(object) + info.dataOffset;
}

} // namespace host
