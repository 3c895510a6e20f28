// Formats property values as JSON.
// All functions: [any].
#pragma once

#include "host/kvx/properties/property_values.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace kvx {

/// Convert a value to JSON: numbers, true or false, texts; codes as texts of four characters; records as
/// objects; lists as arrays. For Form::reference, `value` is the text itself.
/// Returns  the bytes, as hexadecimal digits, if the size of the value does not fit the form.
nlohmann::ordered_json valueJson(Form form, Extent extent, std::string_view value);

/// Convert bytes to a text of hexadecimal digits, "0000803f".
nlohmann::ordered_json bytesJson(std::string_view value);

} // namespace kvx
