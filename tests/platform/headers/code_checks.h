// Macros that compare a code or number of a platform header at compile time. Compiled programs contain these
// values.
#pragma once

#include <MacTypes.h>

namespace test {

constexpr UInt32 codeOf(const char (&text)[5])
{
    UInt32 code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

} // namespace test

#define CODE(name, text) static_assert(static_cast<UInt32>(name) == test::codeOf(text))
#define NUMBER(name, expected) static_assert(static_cast<UInt32>(name) == static_cast<UInt32>(expected))
