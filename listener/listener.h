// The class data of one listener: what it watches.
#pragma once

#include "abi/class_definition.h"
#include "abi/word.h"

#include <CoreAudio/CoreAudio.h>

namespace listener {

/// All fields are written by [main] at construction and keep their values, also after a refused registration.
struct ListenerData {
    HostInteger lastError; ///< of the last registration or unregistration; -1 while one is under way
    std::uint32_t objectID;
    std::uint32_t propertySelector;
    std::uint32_t propertyScope;
    std::uint32_t propertyElement;
};
static_assert(sizeof(void*) != 4 || sizeof(ListenerData) == 20, "the size declared to the host");

/// The class data inside a host object. [main]
ListenerData& dataOf(REALobjectStruct* object);

/// The method "Constructor": watch that property. A refusal is told by lastError; such a listener never
/// fires. [main]
void construct(REALobjectStruct* object, std::uint32_t objectID, std::uint32_t selector, std::uint32_t scope,
               std::uint32_t element);

/// The method "Destructor": stop watching. [main]
void destruct(REALobjectStruct* object);

} // namespace listener
