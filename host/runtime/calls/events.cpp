#include "host/runtime/calls/events.h"

#include "host/runtime/calls/ffi_type.h"
#include "host/runtime/state.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/native.h"
#include "host/runtime/values/records.h"

#include <ffi.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace host {

struct EventBinding {
    std::string className;
    Declaration declaration;
    std::vector<ffi_type*> types; ///< of the object and the arguments; the call description points here
    ffi_cif call;
    ffi_closure* closure = nullptr;
    void* code = nullptr;
};

void EventBindingDeleter::operator()(EventBinding* binding) const
{
    if (binding->closure) ffi_closure_free(binding->closure);
    delete binding;
}

namespace {

Value runHandler(const EventBinding& binding, void** arguments)
{
    auto* object = *static_cast<REALobjectStruct**>(arguments[0]);
    if (!liveValue(object, Kind::object, "an event's function")) return {};
    const auto& handlers = *record<ObjectRecord>(object)->handlers;
    const auto found = handlers.find(&binding);
    if (found == handlers.end()) return {};
    const auto handler = found->second; // a copy: the handler may detach itself
    auto sender = Object(Object::share(object));
    std::vector<Value> values;
    const auto& parameters = binding.declaration.parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        values.push_back(fromNative(arguments[i + 1], parameters[i].type, false));
    return handler(sender, values);
}

/// Write a result as libffi wants it: small integers fill a whole word.
void writeResult(void* result, const Native& native, const Type& type)
{
    ffi_arg widened = 0;
    std::memcpy(&widened, &native, std::min(sizeInMemory(type), sizeof widened));
    if (type.isFloating() || sizeInMemory(type) > sizeof widened)
        storeNative(result, native, type);
    else
        std::memcpy(result, &widened, sizeof widened);
}

/// What the plug-in reaches when it calls the event. Nothing thrown may pass through it.
void enterHandler(ffi_cif*, void* result, void** arguments, void* user)
{
    const auto& binding = *static_cast<EventBinding*>(user);
    const auto& type = binding.declaration.result;
    Native native = {};
    try {
        const auto value = runHandler(binding, arguments);
        if (type.exists() && !(value.isNil() && !type.isReference())) {
            auto lent = toNative(value, type, "the result of event " + binding.declaration.name);
            lent.keep.detach();
            native = lent.native;
        }
    } catch (...) {
        if (auto* host = stateOrNull()) host->handlerError = std::current_exception();
    }
    if (type.exists()) writeResult(result, native, type);
}

} // namespace

Word bindEvent(const ClassInfo& owner, const EventInfo& event)
{
    std::unique_ptr<EventBinding, EventBindingDeleter> binding(new EventBinding);
    binding->className = owner.name;
    binding->declaration = event.declaration;
    binding->types.push_back(&ffi_type_pointer);
    for (const auto& parameter : event.declaration.parameters) {
        if (parameter.isByRef)
            throw ProgramError(fmt::format("event {} of {} lends a variable, which handlers cannot change",
                                           event.declaration.name, owner.name));
        binding->types.push_back(ffiType(parameter.type));
    }
    binding->closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &binding->code));
    const bool isReady =
        binding->closure &&
        ffi_prep_cif(&binding->call, FFI_DEFAULT_ABI, static_cast<unsigned>(binding->types.size()),
                     ffiType(event.declaration.result), binding->types.data()) == FFI_OK &&
        ffi_prep_closure_loc(binding->closure, &binding->call, enterHandler, binding.get(), binding->code) ==
            FFI_OK;
    if (!isReady)
        throw ProgramError(
            fmt::format("event {} of {} cannot be given a function", event.declaration.name, owner.name));
    const auto systemUse = reinterpret_cast<Word>(binding.get());
    state().events.push_back(std::move(binding));
    return systemUse;
}

AnyFunction handlerFunction(REALobjectStruct* object, Word systemUse, const char* service)
{
    const auto& bindings = state().events;
    const auto isIt = [&](const auto& binding) { return reinterpret_cast<Word>(binding.get()) == systemUse; };
    const auto found = std::find_if(bindings.begin(), bindings.end(), isIt);
    if (found == bindings.end()) {
        noteMisuse(
            fmt::format("{} was asked with {:#x}, which is no event's system-use word", service, systemUse));
        return nullptr;
    }
    const auto& info = *record<ObjectRecord>(object)->info;
    if (!info.isA((*found)->className)) {
        noteMisuse(fmt::format("{} was asked for event {} of {} on an object of class {}", service,
                               (*found)->declaration.name, (*found)->className, info.name));
        return nullptr;
    }
    if (record<ObjectRecord>(object)->handlers->count(found->get()) == 0) return nullptr;
    return reinterpret_cast<AnyFunction>((*found)->code);
}

void attachHandler(REALobjectStruct* object, const EventInfo& event, EventHandler handler)
{
    auto& handlers = *record<ObjectRecord>(object)->handlers;
    const auto* binding = reinterpret_cast<const EventBinding*>(event.systemUse);
    if (handler)
        handlers[binding] = std::move(handler);
    else
        handlers.erase(binding);
}

} // namespace host
