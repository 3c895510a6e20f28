// The fields of host values that the plug-in reads, and the platform's codes of the text encodings, as
// checked by the compiler.
#include "abi/host_values.h"

#include <cstddef>

static_assert(offsetof(REALstringStruct, buffer) == 1 * sizeof(Word));
static_assert(offsetof(REALstringStruct, length) == 3 * sizeof(Word));
static_assert(offsetof(REALstringStruct, encoding) == 4 * sizeof(Word));

static_assert(offsetof(REALarrayStruct, elements) == 7 * sizeof(Word));

static_assert(offsetof(REALstringData, bytes) == 0);
static_assert(offsetof(REALstringData, length) == sizeof(Word));
static_assert(offsetof(REALstringData, bookkeeping) == 2 * sizeof(Word));
static_assert(sizeof(REALstringData) == 64);

static_assert(encodingMacRoman == 0x0000);
static_assert(encodingUTF16 == 0x0100);
static_assert(encodingWindowsLatin1 == 0x0500);
static_assert(encodingASCII == 0x0600);
static_assert(encodingUnknown == 0xFFFF);
static_assert(encodingUTF8 == 0x08000100);
static_assert(encodingUTF32 == 0x0C000100);
