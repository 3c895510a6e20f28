#include "host/runtime/calls/dynamic_call.h"

#include "host/runtime/calls/ffi_type.h"
#include "host/runtime/classes/object_record.h"
#include "host/runtime/support/misuse.h"
#include "host/runtime/support/per_host.h"
#include "host/runtime/values/field.h"
#include "host/runtime/values/native.h"

#include <ffi.h>
#include <fmt/format.h>

#include <type_traits>
#include <utility>

namespace host {

namespace {

/// The argument that the host passes for one parameter; it lives until the call has ended.
struct PassedArgument {
    Converted converted;       ///< C form of the value, or of the value in the variable
    void* address = nullptr;   ///< address of the C form; a ByRef parameter receives this address
    Value* variable = nullptr; ///< the program's variable, which receives the changed value; or null
};

std::string countText(std::size_t count)
{
    return fmt::format("{} argument{}", count, count == 1 ? "" : "s");
}

void checkCount(const std::vector<Parameter>& parameters, std::size_t given, const std::string& name)
{
    const std::size_t least = requiredCount(parameters);
    if (given >= least && given <= parameters.size()) return;
    const std::string expected = least == parameters.size()
                                     ? countText(least)
                                     : fmt::format("{} to {}", least, countText(parameters.size()));
    throw ProgramError(fmt::format("{} takes {}, but was given {}", name, expected, given));
}

PassedArgument passed(const Parameter& parameter, const Argument* argument, const std::string& name)
{
    const std::string what = fmt::format("parameter {} of {}", parameter.name, name);
    PassedArgument result;
    if (!argument) {
        const Value value = literalValue(parameter.defaultValue.value_or(Literal()));
        result.converted = toNative(value, parameter.type, what);
        return result;
    }
    if (parameter.isByRef != (argument->variable != nullptr)) {
        throw ProgramError(fmt::format(parameter.isByRef ? "{} changes its variable: pass it with byref"
                                                         : "{} takes a value, not a variable by reference",
                                       what));
    }
    result.variable = argument->variable;
    const Value& value = result.variable ? *result.variable : argument->value;
    const bool isUnset = result.variable && value.isNil() && !parameter.type.isReference();
    if (!isUnset) result.converted = toNative(value, parameter.type, what);
    return result;
}

std::vector<Word> leadingWords(REALobjectStruct* object)
{
    if (!object) return {};
    return {reinterpret_cast<Word>(object)};
}

std::vector<Word> leadingWords(REALobjectStruct* object, const PropertyInfo& property)
{
    std::vector<Word> leading = leadingWords(object);
    leading.push_back(static_cast<Word>(property.parameter));
    return leading;
}

std::string nameOf(const PropertyInfo& property) { return property.owner->name + "." + property.name; }

void* fieldOf(REALobjectStruct* object, const PropertyInfo& property)
{
    return classDataOf(object, *property.owner) + property.parameter;
}

} // namespace

CallScope::CallScope()
{
    auto& exceptions = stateOf<Exceptions>();
    if (exceptions.callDepth == 0 && exceptions.raised) {
        noteMisuse(
            fmt::format("an exception of class {} was raised outside any call, and no caller received it",
                        classOf(exceptions.raised.get()).name));
        exceptions.raised = {};
    }
    outer_ = std::exchange(exceptions.raised, {});
    ++exceptions.callDepth;
}

CallScope::~CallScope()
{
    auto* exceptions = stateOrNull<Exceptions>();
    if (!exceptions) return;
    exceptions->raised = std::exchange(outer_, {});
    --exceptions->callDepth;
}

void CallScope::throwRaised()
{
    auto& exceptions = stateOf<Exceptions>();
    if (const std::exception_ptr thrown = std::exchange(exceptions.handlerError, nullptr))
        std::rethrow_exception(thrown);
    const Ref<REALobjectStruct> raised = std::exchange(exceptions.raised, {});
    if (raised) throw asException(raised.get());
}

HostException asException(REALobjectStruct* raised)
{
    const ClassInfo& info = classOf(raised);
    const PropertyInfo* message = info.property("Message");
    const PropertyInfo* number = info.property("ErrorNumber");
    const std::string text = message ? readProperty(raised, *message).text() : std::string();
    const std::int64_t code = number ? readProperty(raised, *number).integer() : 0;
    return HostException(info.name, text, static_cast<HostInteger>(code));
}

Value callFunction(AnyFunction function, std::vector<Word> leading, const std::vector<Parameter>& parameters,
                   const Type& result, const std::vector<Argument>& arguments, const std::string& name)
{
    checkCount(parameters, arguments.size(), name);

    std::vector<ffi_type*> types;
    std::vector<void*> addresses;
    for (auto& word : leading) {
        types.push_back(&ffi_type_pointer);
        addresses.push_back(&word);
    }
    std::vector<PassedArgument> all(parameters.size());
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Parameter& parameter = parameters[i];
        PassedArgument& argument = all[i];
        argument = passed(parameter, i < arguments.size() ? &arguments[i] : nullptr, name);
        argument.address = &argument.converted.native;
        types.push_back(parameter.isByRef ? &ffi_type_pointer : ffiType(parameter.type));
        addresses.push_back(parameter.isByRef ? static_cast<void*>(&argument.address) : argument.address);
    }

    ffi_cif call;
    if (ffi_prep_cif(&call, FFI_DEFAULT_ABI, static_cast<unsigned>(types.size()), ffiType(result),
                     types.data()) != FFI_OK)
        throw ProgramError(fmt::format("{} cannot be called: libffi refuses its types", name));

    union {
        Native native;
        ffi_arg widened; ///< integer result, which libffi widens to a whole word
    } answer = {};
    CallScope scope;
    for (auto& argument : all) {
        // The called function owns the reference in a ByRef variable, and may replace this reference.
        if (argument.variable) argument.converted.reference.detach();
    }
    ffi_call(&call, function, &answer, addresses.data());
    Value value;
    try {
        if (!result.isVoid()) value = fromNative(&answer.native, result, true);
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            if (all[i].variable)
                *all[i].variable = fromNative(&all[i].converted.native, parameters[i].type, true);
        }
    } catch (const ProgramError&) {
        // A raised exception replaces the error of a dead address, because the exception is the likely cause.
        scope.throwRaised();
        throw;
    }
    scope.throwRaised();
    return value;
}

Value callMethod(REALobjectStruct* object, const MethodInfo& method, const std::vector<Argument>& arguments,
                 const std::string& owner)
{
    const Declaration& declaration = method.declaration;
    // The method may drop the program's last reference to the object.
    const auto kept = Ref<REALobjectStruct>::share(object);
    return callFunction(method.function, leadingWords(object), declaration.parameters, declaration.result,
                        arguments, owner + "." + declaration.name);
}

Value readProperty(REALobjectStruct* object, const PropertyInfo& property)
{
    if (property.getterAccess == Access::field) {
        const Native native = loadField(fieldOf(object, property), property.type);
        return fromNative(&native, property.type, false);
    }
    if (!property.getter) throw ProgramError(nameOf(property) + " cannot be read");
    // Getters must not drop references to their object, so the call adds no reference.
    return callFunction(property.getter, leadingWords(object, property), {}, property.type, {},
                        nameOf(property));
}

void writeProperty(REALobjectStruct* object, const PropertyInfo& property, const Value& value)
{
    const std::string name = nameOf(property);
    if (property.isReadOnly()) throw ProgramError(name + " is read-only");
    if (property.setterAccess == Access::field) {
        void* const field = fieldOf(object, property);
        Converted converted = toNative(value, property.type, name);
        if (!property.type.isReference()) return storeField(field, converted.native, property.type);
        release(exchangeReference(field, converted.reference.detach()));
        return;
    }
    Parameter parameter;
    parameter.name = "value";
    parameter.type = property.type;
    // The setter may drop the program's last reference to the object.
    const auto kept = Ref<REALobjectStruct>::share(object);
    callFunction(property.setter, leadingWords(object, property), {parameter}, {}, {Argument(value)}, name);
}

Value literalValue(const Literal& literal)
{
    return std::visit(
        [](const auto& plain) -> Value {
            if constexpr (std::is_same_v<std::decay_t<decltype(plain)>, std::monostate>)
                return {};
            else
                return plain;
        },
        literal);
}

} // namespace host
