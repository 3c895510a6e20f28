// Four-character codes as host programs write them.
#pragma once

#include "abi/host_values.h"

/// The code that `text` spells, its first character the most significant byte; 0x20202020 for no text.
/// Shape   four characters or more: the first four. Fewer: the bytes behind the text's end take part, as
///         terminator and padding have them ("abc" gives 0x20626300), since a short code is always read from
///         its fourth byte.
/// Thread  [main].
std::uint32_t REALstringToOSType(REALstringStruct* text);
