// The constants of the class: selectors as host programs hold them, four characters with the most significant
// byte first, and two numbers.
#pragma once

#include "abi/host_values.h"

namespace coreaudio {

/// A new string of the four characters of `selector`, marked ASCII. [main]
REALstringStruct* selectorText(std::uint32_t selector);

/// Getters: one function for each value. They ignore the object and the parameter.
template <std::uint32_t selector>
REALstringStruct* getSelector(REALobjectStruct*, HostInteger) // [main]
{
    return selectorText(selector);
}

template <HostInteger value>
HostInteger getValue(REALobjectStruct*, HostInteger) // [any]
{
    return value;
}

} // namespace coreaudio
