// Host strings built from bytes and from platform (CF) strings.
//
// Each function returns a new string with one reference for the caller, or null.
// All functions: [main].
#pragma once

#include "abi/host_values.h"

#include <CoreFoundation/CoreFoundation.h>

/// A string of `length` bytes of text in `encoding`.
/// Shape   lengths of 1 to 0x7FFFFFFF bytes. UTF-16 and UTF-32 are converted to UTF-8. ASCII bytes in Mac
///         Roman, Windows Latin 1 or an unknown encoding are labelled ASCII. Other text keeps its bytes and
///         its encoding.
/// Errors  null bytes or another length: null. A C++ exception: null, and the corresponding host exception.
REALstringStruct* REALBuildUnicodeString(const void* bytes, long long length, unsigned long encoding);

/// A UTF-8 string from `length` bytes of UTF-16 text in the processor's byte order.
REALstringStruct* REALBuildUnicodeStringUTF16(const void* bytes, long long length);

/// A UTF-8 string with the text of a platform string; null for a null or empty one.
REALstringStruct* CFString2RBString(CFStringRef text);
