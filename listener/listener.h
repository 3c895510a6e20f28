// The class data of one listener, its construction and its destruction.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"
#include "abi/word.h"

#include <CoreAudio/CoreAudio.h>

namespace listener {

/// Class data of one listener, written by the main thread. The four fields after `lastError` keep the
/// constructor's arguments, even if the platform refuses the registration.
struct ListenerData {
    HostInteger lastError; ///< status of the last registration or unregistration; -1 during the platform call
    std::uint32_t objectID;
    std::uint32_t propertySelector;
    std::uint32_t propertyScope;
    std::uint32_t propertyElement;
};
static_assert(sizeof(void*) != 4 || sizeof(ListenerData) == 20, "the size declared to the host");

/// The class data inside a host object.
ListenerData& dataOf(REALobjectStruct* object);

/// The method "Constructor": start to watch one property of an audio object.
/// Errors  if the platform refuses the registration, `lastError` is the platform's status and the object
///         receives no events.
void construct(REALobjectStruct* object, std::uint32_t objectID, std::uint32_t selector, std::uint32_t scope,
               std::uint32_t element);

/// The method "Destructor": stop watching the property.
void destruct(REALobjectStruct* object);

} // namespace listener
