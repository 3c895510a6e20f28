// Host strings from our own bytes and from platform strings.
//
// All return a new string with one reference for the caller, usually handed to the host as a result, or null.
// Thread: [main].
#pragma once

#include "abi/host_values.h"

#include <CoreFoundation/CoreFoundation.h>

/// A string of `length` bytes of text in `encoding`.
/// Shape   lengths of 1 to 0x7FFFFFFF bytes. UTF-16 and UTF-32 become UTF-8; bytes in Mac Roman, Windows
///         Latin 1 or no known encoding that are all ASCII are marked ASCII; other text is marked as it is.
/// Errors  null bytes or another length: null. A C++ exception on the way: null and the host exception for
///         it.
REALstringStruct* REALBuildUnicodeString(const void* bytes, long long length, unsigned long encoding);

/// A UTF-8 string of `length` bytes of UTF-16 text in the processor's byte order.
REALstringStruct* REALBuildUnicodeStringUTF16(const void* bytes, long long length);

/// A UTF-8 string with the platform string's text; null for none and for an empty one.
REALstringStruct* CFString2RBString(CFStringRef text);
