// Events: the C functions through which the plug-in calls the handlers of a program.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "host/runtime/classes/class_info.h"

#include <ffi.h>

#include <list>
#include <vector>

namespace host {

/// The C function of one event. It calls the handler of the object in its first argument.
struct EventFunction {
    explicit EventFunction(const EventInfo& info);
    ~EventFunction() { ffi_closure_free(closure); }
    EventFunction(const EventFunction&) = delete;
    EventFunction& operator=(const EventFunction&) = delete;

    const EventInfo& event;
    std::vector<ffi_type*>
        types; ///< libffi types of the object and the arguments; `call` refers to this array
    ffi_cif call;
    ffi_closure* closure = nullptr;
    void* code = nullptr; ///< address of the C function
};

/// The C functions of the current host's events, made as the plug-in asks for them.
struct EventFunctions {
    std::list<EventFunction> functions;
};

/// The C function of the event with the key `systemUse`; null if the object has no handler for the event. An
/// unknown key, and a key of another class, are noted as misuses of `service`.
/// Throws  ProgramError if libffi cannot make the function.
AnyFunction eventFunction(REALobjectStruct* object, Word systemUse, const char* service);

} // namespace host
