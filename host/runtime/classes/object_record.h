// An object in memory: a value header, the record below, and the class data of each class of the object at
// the class's `dataOffset` from the record.
#pragma once

#include "host/runtime/classes/class_info.h"
#include "host/runtime/values/counted.h"

#include <cstddef>

struct REALobjectStruct;

namespace host {

struct EventHandlers; ///< handlers that a program attached to the object's events

struct ObjectRecord {
    const ClassInfo* info; ///< class of the object
    EventHandlers* handlers;
};

/// The data offset of a class whose class data follows the record directly.
constexpr std::size_t firstDataOffset = roundUpToAlignment(sizeof(ObjectRecord));

/// The address of one class's data in an object.
inline char* classDataOf(REALobjectStruct* object, const ClassInfo& info)
{
    return reinterpret_cast<char*>(object) + info.dataOffset;
}

} // namespace host
