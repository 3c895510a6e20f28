// Text from outside, such as names of devices.
#pragma once

#include <string>
#include <string_view>

namespace kvx {

/// The text fit for a terminal: UTF-8, each control character and each wrong byte a question mark.
std::string plainText(std::string_view text);

/// The same for lines whose columns are counted: each character that is not ASCII is a question mark, too.
std::string asciiText(std::string_view text);

} // namespace kvx
