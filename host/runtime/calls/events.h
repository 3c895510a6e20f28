// Events: C functions through which the plug-in calls the event handlers of a program.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "host/runtime/classes/class_info.h"

#include <ffi.h>

#include <list>
#include <vector>

namespace host {

/// The C function of one event. The function calls the event handler of the object in its first argument.
struct EventFunction {
    explicit EventFunction(const EventInfo& info);
    ~EventFunction() { ffi_closure_free(closure); }
    EventFunction(const EventFunction&) = delete;
    EventFunction& operator=(const EventFunction&) = delete;

    const EventInfo& event;
    std::vector<ffi_type*> types; ///< libffi types of object and arguments; `call` keeps their address
    ffi_cif call;
    ffi_closure* closure = nullptr;
    void* code = nullptr; ///< address of the C function that the plug-in calls
};

/// The C functions of events in the current host. The first request for a function makes the function.
struct EventFunctions {
    std::list<EventFunction> functions;
};

/// Return the C function of the event with the key `systemUse`; null if the object has no handler for it. An
/// unknown key, and the key of an event of another class, are noted as misuses of `service`.
/// Errors  ProgramError if libffi cannot make the function.
AnyFunction eventFunction(REALobjectStruct* object, Word systemUse, const char* service);

} // namespace host
