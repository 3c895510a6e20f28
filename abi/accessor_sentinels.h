// Sentinel values for the getter and setter words of a property: the host reads or writes the field itself.
// The field's offset in the class data is the property's parameter word.
#pragma once

#include "abi/word.h"

// The host defines the numeric values. These two are valid where host and plug-in are built together; confirm
// them against any other host.
constexpr Word REALstandardGetter = 0x1;
constexpr Word REALstandardSetter = 0x2;
