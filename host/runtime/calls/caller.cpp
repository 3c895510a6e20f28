#include "host/runtime/calls/caller.h"

#include "host/runtime/calls/ffi_type.h"
#include "host/runtime/calls/object.h"
#include "host/runtime/state.h"
#include "host/runtime/support/errors.h"
#include "host/runtime/values/native.h"
#include "host/runtime/values/records.h"

#include <ffi.h>
#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <limits>

namespace host {

namespace {

/// One parameter's argument on its way through a call.
struct Passed {
    Lent lent;               ///< the value, or the variable's contents
    void* address = nullptr; ///< of those contents, for a variable lent by reference
    Value* variable = nullptr;
};

std::string countText(std::size_t count)
{
    return fmt::format("{} argument{}", count, count == 1 ? "" : "s");
}

void checkCount(const std::vector<Parameter>& parameters, std::size_t given, const std::string& name)
{
    Declaration declaration;
    declaration.parameters = parameters;
    const auto least = declaration.requiredCount();
    if (given >= least && given <= parameters.size()) return;
    const auto wanted = least == parameters.size()
                            ? countText(least)
                            : fmt::format("{} to {}", least, countText(parameters.size()));
    throw ProgramError(fmt::format("{} takes {}, but was given {}", name, wanted, given));
}

Passed passed(const Parameter& parameter, const Argument* argument, const std::string& name)
{
    const auto what = fmt::format("parameter {} of {}", parameter.name, name);
    Passed result;
    if (!argument) {
        result.lent = toNative(literalValue(parameter.preset.value_or(Literal())), parameter.type, what);
        return result;
    }
    if (parameter.isByRef != (argument->variable != nullptr)) {
        throw ProgramError(fmt::format(parameter.isByRef ? "{} changes its variable: pass it with byref"
                                                         : "{} takes a value, not a variable by reference",
                                       what));
    }
    result.variable = argument->variable;
    const auto& value = result.variable ? *result.variable : argument->value;
    const bool isUnset = result.variable && value.isNil() && !parameter.type.isReference();
    if (!isUnset) result.lent = toNative(value, parameter.type, what);
    return result;
}

/// The callee may replace the reference in a variable: it drops the one there and leaves another.
void giveToVariable(Passed& argument)
{
    if (argument.variable) argument.lent.keep.detach();
}

void takeFromVariable(Passed& argument, const Parameter& parameter)
{
    if (argument.variable) *argument.variable = fromNative(&argument.lent.native, parameter.type, true);
}

void* classDataOf(REALobjectStruct* object, const ClassInfo& owner)
{
    return reinterpret_cast<char*>(object) + owner.dataOffset;
}

Parameter valueParameter(const PropertyInfo& property)
{
    Parameter parameter;
    parameter.name = "value";
    parameter.type = property.type;
    return parameter;
}

LeadingWords leadingWords(REALobjectStruct* object)
{
    LeadingWords leading;
    if (object) leading.words.push_back(reinterpret_cast<Word>(object));
    return leading;
}

} // namespace

Value callFunction(AnyFunction function, const LeadingWords& leading,
                   const std::vector<Parameter>& parameters, const Type& result,
                   const std::vector<Argument>& arguments, const std::string& name)
{
    checkCount(parameters, arguments.size(), name);

    std::vector<ffi_type*> types;
    std::vector<void*> places;
    auto words = leading.words;
    for (auto& word : words) {
        types.push_back(&ffi_type_pointer);
        places.push_back(&word);
    }
    std::vector<Passed> all(parameters.size());
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const auto& parameter = parameters[i];
        auto& argument = all[i];
        argument = passed(parameter, i < arguments.size() ? &arguments[i] : nullptr, name);
        argument.address = &argument.lent.native;
        types.push_back(parameter.isByRef ? &ffi_type_pointer : ffiType(parameter.type));
        places.push_back(parameter.isByRef ? static_cast<void*>(&argument.address) : argument.address);
    }

    ffi_cif call;
    if (ffi_prep_cif(&call, FFI_DEFAULT_ABI, static_cast<unsigned>(types.size()), ffiType(result),
                     types.data()) != FFI_OK)
        throw ProgramError(fmt::format("{} cannot be called: its types are not known to libffi", name));

    union {
        Native native;
        ffi_arg widened; ///< libffi widens small results to this
    } answer = {};
    CallScope scope;
    for (auto& argument : all) giveToVariable(argument);
    ffi_call(&call, function, &answer, places.data());
    const Value value = result.exists() ? fromNative(&answer.native, result, true) : Value();
    for (std::size_t i = 0; i < parameters.size(); ++i) takeFromVariable(all[i], parameters[i]);
    scope.finish();
    return value;
}

const MethodInfo& chooseOverload(const std::vector<const MethodInfo*>& overloads,
                                 const std::vector<Argument>& arguments, const std::string& owner)
{
    if (overloads.size() == 1) return *overloads.front();
    const MethodInfo* best = nullptr;
    int least = std::numeric_limits<int>::max();
    for (const auto* method : overloads) {
        const auto& parameters = method->declaration.parameters;
        if (arguments.size() < method->declaration.requiredCount() || arguments.size() > parameters.size())
            continue;
        int sum = 0;
        bool fits = true;
        for (std::size_t i = 0; i < arguments.size() && fits; ++i) {
            const auto& argument = arguments[i];
            const bool isVariable = argument.variable != nullptr;
            const auto one = isVariable && argument.value.isNil()
                                 ? std::optional<int>(0)
                                 : misfit(argument.value, parameters[i].type);
            fits = one && parameters[i].isByRef == isVariable;
            sum += one.value_or(0);
        }
        if (fits && sum < least) {
            best = method;
            least = sum;
        }
    }
    if (best) return *best;
    std::string given, choices;
    for (const auto& argument : arguments) given += (given.empty() ? "" : ", ") + argument.value.describe();
    for (const auto* method : overloads) choices += "\n  " + print(method->declaration);
    throw ProgramError(fmt::format("no {} of {} takes ({}); there are:{}",
                                   overloads.front()->declaration.name, owner, given, choices));
}

Value callMethod(REALobjectStruct* object, const MethodInfo& method, const std::vector<Argument>& arguments,
                 const std::string& owner)
{
    const auto& declaration = method.declaration;
    return callFunction(method.function, leadingWords(object), declaration.parameters, declaration.result,
                        arguments, owner + "." + declaration.name);
}

const ClassInfo& ownerOf(const ClassInfo& info, const PropertyInfo& property)
{
    const auto declares = [&](const ClassInfo& candidate) {
        const auto in = [&](const std::vector<PropertyInfo>& list) {
            return !list.empty() && &property >= &list.front() && &property <= &list.back();
        };
        return in(candidate.properties) || in(candidate.sharedProperties);
    };
    const auto* owner = &info;
    while (owner->super && !declares(*owner)) owner = owner->super;
    return *owner;
}

Value readProperty(REALobjectStruct* object, const ClassInfo& owner, const PropertyInfo& property)
{
    if (property.getterAccess == Access::field) {
        const auto* field = static_cast<char*>(classDataOf(object, owner)) + property.parameter;
        const auto native = loadField(field, property.type);
        return fromNative(&native, property.type, false);
    }
    if (!property.getter) throw ProgramError(fmt::format("{}.{} cannot be read", owner.name, property.name));
    auto leading = leadingWords(object);
    leading.words.push_back(static_cast<Word>(property.parameter));
    return callFunction(property.getter, leading, {}, property.type, {}, owner.name + "." + property.name);
}

void writeProperty(REALobjectStruct* object, const ClassInfo& owner, const PropertyInfo& property,
                   const Value& value)
{
    const auto name = owner.name + "." + property.name;
    if (property.isReadOnly) throw ProgramError(name + " is read-only");
    if (property.setterAccess == Access::field) {
        auto* field = static_cast<char*>(classDataOf(object, owner)) + property.parameter;
        auto lent = toNative(value, property.type, name);
        if (!property.type.isReference()) return storeField(field, lent.native, property.type);
        release(exchangeReference(field, lent.keep.detach()));
        return;
    }
    auto leading = leadingWords(object);
    leading.words.push_back(static_cast<Word>(property.parameter));
    callFunction(property.setter, leading, {valueParameter(property)}, {}, {Argument(value)}, name);
}

} // namespace host
