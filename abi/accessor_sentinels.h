// Sentinel values in place of the addresses of a property's getter and setter: the host itself reads or
// writes a field of the class data, whose offset is the property's `parameter`.
#pragma once

#include "abi/word.h"

// The host defines the numeric values. The values below are valid for a host that is built together with the
// plug-in; confirm them against any other host.
constexpr Word REALstandardGetter = 0x1;
constexpr Word REALstandardSetter = 0x2;
