// Declarations: a class definition declares each member in one line of text.
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

/// A constant value in a declaration: nil, true or false, an integer, a floating-point number, a quoted text.
using Literal = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

struct Parameter {
    std::string name;
    Type type;
    bool isByRef = false;
    bool isAssigned = false; ///< whether the parameter is the right side of an assignment ("Assigns")
    std::optional<Literal> defaultValue; ///< value if the call passes no argument; empty if it must pass one
};

/// The smallest number of arguments of a call: those up to the last parameter without a default value.
std::size_t requiredCount(const std::vector<Parameter>& parameters);

struct Declaration {
    std::string name;
    std::vector<Parameter> parameters;
    Type result; ///< type of the result; Base::none if the method has no result

    bool isAssignment() const { return !parameters.empty() && parameters.back().isAssigned; }
};

struct ConstantDeclaration {
    std::string name;
    std::optional<Type> type; ///< declared type; empty if the declaration has no type
    Literal value;
};

/// Parse the declaration of a method or an event.
/// Errors  ProgramError with the position of the error and the text that was expected there.
Declaration parseDeclaration(std::string_view text);

/// Parse a constant: "Name = value" or "Name as Type = value". Throws as parseDeclaration().
ConstantDeclaration parseConstant(std::string_view text);

/// Whether two declarations have the same name and result, and parameters of the same types, "ByRef" and
/// "Assigns". The comparison ignores case, spaces, default values and the names of the parameters.
bool sameSignature(const Declaration& left, const Declaration& right);

/// Print a declaration, or a value in a declaration, in uniform spelling for listings and messages.
std::string print(const Declaration& declaration);
std::string print(const Literal& literal);

} // namespace host
