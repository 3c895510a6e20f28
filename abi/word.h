// The unit of every host record: one machine word.
#pragma once

#include <cstdint>

/// A word of a host record. 32 bits on the product's target; the 64-bit build exists for the thread
/// sanitizer.
using Word = std::uintptr_t;

/// The host's Integer: 32 bits on the product's target, and as wide as a pointer wherever the code is built.
using HostInteger = std::intptr_t;

/// The address of a function whose type only its declaration text tells.
using AnyFunction = void (*)();

/// The host's Boolean: 8 bits, anything but zero is true.
using HostBoolean = unsigned char;
