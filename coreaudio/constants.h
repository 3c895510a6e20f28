// Selectors as host programs hold them: four characters, the most significant byte first.
#pragma once

#include "abi/host_values.h"

namespace coreaudio {

/// A new string of the four characters of `selector`, marked ASCII; the object is not looked at. [main]
REALstringStruct* getSelector(REALobjectStruct* object, HostInteger selector);

/// The value itself. [any]
HostInteger getValue(REALobjectStruct* object, HostInteger value);

} // namespace coreaudio
