// The constants of the class: selectors as text of four characters, most significant byte first, and two
// numbers.
#pragma once

#include "abi/host_values.h"

namespace coreaudio {

/// Build a string of the four characters of `selector`, labelled ASCII.
/// [main]
REALstringStruct* selectorText(std::uint32_t selector);

/// Getter of a constant that is a selector.
/// [main]
template <std::uint32_t selector>
REALstringStruct* getSelector(REALobjectStruct*, HostInteger)
{
    return selectorText(selector);
}

/// Getter of a constant that is a number.
/// [any]
template <HostInteger value>
HostInteger getValue(REALobjectStruct*, HostInteger)
{
    return value;
}

} // namespace coreaudio
