// Host strings built from bytes and from platform strings (CFStringRef).
//
// Each function returns a new string, of which the caller owns one reference, or null.
// All functions: [main].
#pragma once

#include "abi/host_values.h"

#include <CoreFoundation/CoreFoundation.h>

/// Build a string from `length` bytes of text in `encoding`.
/// Shape   `length` is 1 to 0x7FFFFFFF. UTF-16 and UTF-32 text is converted to UTF-8. ASCII text in Mac
///         Roman, Windows Latin 1 or an unknown encoding is labelled ASCII. Other text keeps its bytes and is
///         labelled with `encoding`.
/// Errors  null bytes or another length: returns null. A C++ exception: returns null and raises the
///         corresponding host exception.
REALstringStruct* REALBuildUnicodeString(const void* bytes, long long length, unsigned long encoding);

/// Build a UTF-8 string from `length` bytes of UTF-16 text in the processor's byte order.
REALstringStruct* REALBuildUnicodeStringUTF16(const void* bytes, long long length);

/// Build a UTF-8 string from a platform string. Returns null if `text` is null or empty.
REALstringStruct* CFString2RBString(CFStringRef text);
