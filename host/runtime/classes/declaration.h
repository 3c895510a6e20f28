// Declarations of class members: one line of text each.
//
//   FreeSpace as integer
//   PlayAudio(Data as memoryblock, offsetBytes as integer=0, ClearBuffers as boolean=false) as boolean
//   GetInfo(byref size as integer)          Value(key As Variant, Assigns _value As Variant)
//   ChannelMap as Integer()                 setChannelMap(values() as Integer)
//   OutputUnitDefault = 0                   Pi as Double = 3.25          (constants)
//
// All functions: [any].
#pragma once

#include "host/runtime/values/type.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace host {

/// A value in a declaration: nil, true or false, an integer, a floating-point number, a quoted text.
using Literal = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

struct Parameter {
    std::string name;
    Type type;
    bool isByRef = false;
    bool isAssigned = false; ///< whether the parameter is the right side of an assignment ("Assigns")
    std::optional<Literal> defaultValue; ///< value of a missing argument; nothing if the argument is required
};

/// The number of arguments that a call must pass: all up to the last parameter without a default.
std::size_t requiredCount(const std::vector<Parameter>& parameters);

struct Declaration {
    std::string name;
    std::vector<Parameter> parameters;
    Type result; ///< type of the result; Base::none for a method without a result

    bool isAssignment() const { return !parameters.empty() && parameters.back().isAssigned; }
};

struct ConstantDeclaration {
    std::string name;
    std::optional<Type> type; ///< declared type; nothing if the text has none
    Literal value;
};

/// Parse the declaration of a method or an event. Throws ProgramError with the position of the error and the
/// expected text.
Declaration parseDeclaration(std::string_view text);

/// Parse "Name = value" or "Name as Type = value". Throws as parseDeclaration.
ConstantDeclaration parseConstant(std::string_view text);

/// Whether two declarations declare the same member: equal names, results, and types of the parameters, with
/// the same "ByRef" and "Assigns". Parameter names, defaults, spaces and case are ignored.
bool sameSignature(const Declaration& left, const Declaration& right);

/// Print a declaration in a uniform spelling, for listings and messages.
std::string print(const Declaration& declaration);
std::string print(const Literal& literal);

} // namespace host
