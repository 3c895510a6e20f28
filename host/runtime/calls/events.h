// Events: C functions that the plug-in may call, made for each event, which find the handler that the program
// attached to the object.
#pragma once

#include "host/runtime/calls/object.h"
#include "host/runtime/classes/class_info.h"

#include <string_view>

struct REALobjectStruct;

namespace host {

/// One event of one class, with its C function. The plug-in knows its address as the system-use word.
struct EventBinding;

/// Make the binding of an event and return its system-use word. Throws ProgramError where the event's types
/// cannot be called.
Word bindEvent(const ClassInfo& owner, const EventInfo& event);

/// The C function if the object has a handler for the event of that system-use word, else null.
AnyFunction handlerFunction(REALobjectStruct* object, Word systemUse, const char* service);

void attachHandler(REALobjectStruct* object, const EventInfo& event, EventHandler handler);

} // namespace host
