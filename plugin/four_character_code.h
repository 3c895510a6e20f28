// Four-character codes, written as text by host programs.
#pragma once

#include "abi/host_values.h"

/// The code of the first four characters of `text` in Mac Roman; the first is the most significant byte.
/// Shape   null, empty and unconvertible text give 0x20202020. A text of n < 4 characters gives n bytes, read
///         backwards from the fourth; bytes after its end are 0: "abc" gives 0x20626300.
/// [main]
std::uint32_t REALstringToOSType(REALstringStruct* text);
