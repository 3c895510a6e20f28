// The constants of the class: selectors as text of four characters, most significant byte first, and two
// numbers.
#pragma once

#include "abi/host_values.h"

namespace coreaudio {

/// A new string of the four characters of `selector`, labelled ASCII.
/// [main]
REALstringStruct* selectorText(std::uint32_t selector);

/// A getter for one selector.
/// [main]
template <std::uint32_t selector>
REALstringStruct* getSelector(REALobjectStruct*, HostInteger)
{
    return selectorText(selector);
}

/// A getter for one number.
/// [any]
template <HostInteger value>
HostInteger getValue(REALobjectStruct*, HostInteger)
{
    return value;
}

} // namespace coreaudio
