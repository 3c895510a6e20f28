// Calls of plug-in functions by their declarations.
#pragma once

#include "host/runtime/classes/class_info.h"
#include "host/runtime/values/value.h"

#include <string>
#include <vector>

struct REALobjectStruct;

namespace host {

/// The words that come before a declaration's own arguments.
struct LeadingWords {
    std::vector<Word> words;
};

/// Call `function(leading…, arguments…)`. Arguments that are left out take their defaults; variables lent by
/// reference are changed after the call, also when it raised. `name` is for messages.
/// Throws ProgramError before anything is called, HostException after it.
Value callFunction(AnyFunction function, const LeadingWords& leading,
                   const std::vector<Parameter>& parameters, const Type& result,
                   const std::vector<Argument>& arguments, const std::string& name);

/// The overload that the arguments fit best; the first of equals. Throws ProgramError if none fits, saying
/// what they take; `owner` is the class's name for that.
const MethodInfo& chooseOverload(const std::vector<const MethodInfo*>& overloads,
                                 const std::vector<Argument>& arguments, const std::string& owner);

/// Call a method of an object, or a shared one (null object).
Value callMethod(REALobjectStruct* object, const MethodInfo& method, const std::vector<Argument>& arguments,
                 const std::string& owner);

/// Read and write a property through its functions or in the object's class data.
Value readProperty(REALobjectStruct* object, const ClassInfo& owner, const PropertyInfo& property);
void writeProperty(REALobjectStruct* object, const ClassInfo& owner, const PropertyInfo& property,
                   const Value& value);

/// The class of the chain from `info` upward that declares `property`.
const ClassInfo& ownerOf(const ClassInfo& info, const PropertyInfo& property);

} // namespace host
