// Declarations: the one line of text that tells how a member is called.
//
//   FreeSpace as integer
//   PlayAudio(Data as memoryblock, offsetBytes as integer=0, ClearBuffers as boolean=false) as boolean
//   GetInfo(byref size as integer)          Value(key As Variant, Assigns _value As Variant)
//   ChannelMap as Integer()                 setChannelMap(values() as Integer)
//   OutputUnitDefault = 0                   Pi as Double = 3.25          (constants)
#pragma once

#include "host/runtime/values/type.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace host {

/// A value written in a declaration: nil, true/false, a whole or a floating-point number, a quoted text.
using Literal = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

struct Parameter {
    std::string name;
    Type type;
    bool isByRef = false;
    bool isAssigned = false;       ///< "Assigns": the value on the right of an assignment
    std::optional<Literal> preset; ///< the default; an argument without one must be given
};

struct Declaration {
    std::string name;
    std::vector<Parameter> parameters;
    Type result; ///< Base::none where there is none

    std::size_t requiredCount() const; ///< arguments that must be given
    bool isAssignment() const { return !parameters.empty() && parameters.back().isAssigned; }
};

struct ConstantDeclaration {
    std::string name;
    std::optional<Type> type; ///< absent where the text names none
    Literal value;
};

/// Parse a method's or event's declaration. Throws ProgramError with the place and what was expected there.
Declaration parseDeclaration(std::string_view text);

/// Parse "Name = value" or "Name as Type = value". Errors as above.
ConstantDeclaration parseConstant(std::string_view text);

/// Whether two declarations name the same member: same name, and parameters of the same types in the same
/// order, lent and assigned alike. Names of parameters, defaults, spaces and case do not matter; the result
/// must agree too.
bool sameSignature(const Declaration& left, const Declaration& right);

/// The declaration in one uniform spelling, for listings and messages.
std::string print(const Declaration& declaration);
std::string print(const Literal& literal);

} // namespace host
