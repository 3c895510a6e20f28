// The unit of every host record: one machine word.
#pragma once

#include <cstdint>

/// A word of a host record: 32 bits in the product. 64-bit builds exist for the thread sanitizer only.
using Word = std::uintptr_t;

/// The host's Integer, as wide as a pointer: 32 bits in the product.
using HostInteger = std::intptr_t;

/// A function's address; the member's declaration determines the function's type.
using AnyFunction = void (*)();

/// The host's Boolean: 8 bits; any value other than 0 is true.
using HostBoolean = unsigned char;
