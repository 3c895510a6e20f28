// The machine word: the unit of every structure that host and plug-in exchange.
#pragma once

#include <cstdint>

/// A machine word in a host structure: 32 bits in the product. 64-bit builds exist for the thread sanitizer
/// only.
using Word = std::uintptr_t;

/// Type of the host's Integer, as wide as a pointer: 32 bits in the product.
using HostInteger = std::intptr_t;

/// Address of a function whose type follows from a declaration, such as the declaration of a class member.
using AnyFunction = void (*)();

/// Type of the host's Boolean: 8 bits; any value other than 0 is true.
using HostBoolean = unsigned char;
