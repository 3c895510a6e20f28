// Property values as text, and text as property values. parseValue() reads what printValue() prints.
#pragma once

#include "host/kvx/library/core_audio.h"
#include "host/kvx/properties/property_types.h"

#include <functional>
#include <string>
#include <string_view>

namespace kvx {

/// Print a value in the given form, one item per line, without a newline at the end. A value whose size does
/// not fit the form is printed by dumpBytes(). The value of a `reference` is the text.
std::string printValue(Form form, Extent extent, std::string_view value);

/// Whether a property has the value that was written, given the bytes that are read back. A zero field of a
/// written format fits any value; `single` values fit within a ten-thousandth; other values must be
/// identical.
bool isKept(Form form, std::string_view written, std::string_view read);

/// Finds the object that a text in a value names.
/// Errors  throws Failure.
using FindObject = std::function<ObjectID(const std::string& text)>;

/// Read the text of a value into its bytes. White space separates the items of a list.
/// Errors  throws WrongUsage, with an example of a valid text.
std::string parseValue(Form form, Extent extent, const std::string& text, const FindObject& findObject);

} // namespace kvx
