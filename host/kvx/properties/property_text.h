// Values of properties as text, and back: what one prints the other reads.
#pragma once

#include "host/kvx/library/core_audio.h"
#include "host/kvx/properties/property_types.h"

#include <functional>
#include <string>
#include <string_view>

namespace kvx {

/// The value in the form given, an item a line, without a newline at the end; empty for no items. A value
/// that is not as long as its form wants is printed by dumpBytes. `reference` values are their text here.
std::string printValue(Form form, Extent extent, std::string_view value);

/// Whether a property that reads `read` has the value that was `written`: the same bytes; of a format only
/// the fields that were given; single precision within a ten-thousandth.
bool isKept(Form form, std::string_view written, std::string_view read);

/// What the name of an object in a value stands for. Throws Failure.
using FindObject = std::function<ObjectID(const std::string& text)>;

/// The bytes of a value that a user typed, items apart by white space. Throws WrongUsage, with an example of
/// what is read.
std::string parseValue(Form form, Extent extent, const std::string& text, const FindObject& findObject);

} // namespace kvx
