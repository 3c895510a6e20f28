// Four-character codes that host programs write as text.
#pragma once

#include "abi/host_values.h"

/// The 32-bit code of the first four characters of `text` in Mac Roman, with the first character in the most
/// significant byte.
/// Shape   null, empty and unconvertible text give 0x20202020. A text of n < 4 characters sets only the n low
///         bytes of 0x20202020, to the last n of the four bytes at the text's address (terminator included):
///         "abc" gives 0x20626300.
/// [main]
std::uint32_t REALstringToOSType(REALstringStruct* text);
