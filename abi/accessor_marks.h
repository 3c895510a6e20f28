// Marks in the getter and setter words of a property: the host reads or writes the field itself, at the
// offset that the property's parameter word gives within the class data. A null setter makes the field
// read-only.
#pragma once

#include "abi/word.h"

// The numeric values are the host's own. These two stand in for them here, where both sides are built
// together; confirm them against the host before shipping.
constexpr Word REALstandardGetter = 0x1;
constexpr Word REALstandardSetter = 0x2;
