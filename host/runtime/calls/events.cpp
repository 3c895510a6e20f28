#include "host/runtime/calls/events.h"

#include "host/runtime/calls/dynamic_call.h"
#include "host/runtime/calls/ffi_type.h"
#include "host/runtime/calls/object.h"
#include "host/runtime/classes/object_record.h"
#include "host/runtime/support/misuse.h"
#include "host/runtime/support/per_host.h"
#include "host/runtime/values/native.h"

#include <ffi.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace host {

namespace {

Value runHandler(const EventInfo& event, void** arguments)
{
    auto* const handle = *static_cast<REALobjectStruct**>(arguments[0]);
    auto sender = checkedArgument<Object>(handle, "the function of an event");
    const EventHandler* attached = sender ? handlerOf(handle, event) : nullptr;
    if (!attached) return {};
    const EventHandler handler = *attached; // a copy of the handler, because the handler may detach itself
    std::vector<Value> values;
    const std::vector<Parameter>& parameters = event.declaration.parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        values.push_back(fromNative(arguments[i + 1], parameters[i].type, false));
    return handler(sender, values);
}

/// Write the handler's result where libffi expects it. libffi expects small integers widened to a word.
void writeResult(void* result, const Native& native, const Type& type)
{
    ffi_arg widened = 0;
    std::memcpy(&widened, &native, std::min(sizeInMemory(type), sizeof widened));
    if (type.isFloating() || sizeInMemory(type) > sizeof widened)
        storeNative(result, native, type);
    else
        std::memcpy(result, &widened, sizeof widened);
}

/// libffi calls this function for the C function of every event. An exception of the handler is stored,
/// because an exception must not pass through the plug-in.
void enterHandler(ffi_cif*, void* result, void** arguments, void* user)
{
    const EventInfo& event = static_cast<EventFunction*>(user)->event;
    const Type& type = event.declaration.result;
    Native native = {};
    try {
        const Value value = runHandler(event, arguments);
        if (!type.isVoid() && !(value.isNil() && !type.isReference())) {
            Converted converted = toNative(value, type, "the result of event " + event.declaration.name);
            converted.reference.detach();
            native = converted.native;
        }
    } catch (...) {
        if (auto* exceptions = stateOrNull<Exceptions>()) exceptions->handlerError = std::current_exception();
    }
    if (!type.isVoid()) writeResult(result, native, type);
}

const EventInfo* eventOf(Word systemUse)
{
    for (const auto& info : stateOf<ClassTable>().classes) {
        for (const auto& event : info->events) {
            if (event.systemUse == systemUse) return &event;
        }
    }
    return nullptr;
}

} // namespace

EventFunction::EventFunction(const EventInfo& info) : event(info)
{
    types.push_back(&ffi_type_pointer);
    for (const auto& parameter : event.declaration.parameters) types.push_back(ffiType(parameter.type));
    closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &code));
    const bool isReady = closure &&
                         ffi_prep_cif(&call, FFI_DEFAULT_ABI, static_cast<unsigned>(types.size()),
                                      ffiType(event.declaration.result), types.data()) == FFI_OK &&
                         ffi_prep_closure_loc(closure, &call, enterHandler, this, code) == FFI_OK;
    if (isReady) return;
    if (closure) ffi_closure_free(closure);
    throw ProgramError(fmt::format("event {} of {}: libffi cannot make a function of its types",
                                   event.declaration.name, event.owner->name));
}

AnyFunction eventFunction(REALobjectStruct* object, Word systemUse, const char* service)
{
    const EventInfo* event = eventOf(systemUse);
    if (!event) {
        noteMisuse(fmt::format("{} was given {:#x}, which is not the key of an event", service, systemUse));
        return nullptr;
    }
    const ClassInfo& info = classOf(object);
    if (!info.isA(event->owner->name)) {
        noteMisuse(fmt::format("{} was given the key of event {} of {} with an object of class {}", service,
                               event->declaration.name, event->owner->name, info.name));
        return nullptr;
    }
    if (!handlerOf(object, *event)) return nullptr;
    auto& functions = stateOf<EventFunctions>().functions;
    const auto isOfEvent = [&](const EventFunction& function) { return &function.event == event; };
    const auto made = std::find_if(functions.begin(), functions.end(), isOfEvent);
    const EventFunction& function = made != functions.end() ? *made : functions.emplace_back(*event);
    return reinterpret_cast<AnyFunction>(function.code);
}

} // namespace host
