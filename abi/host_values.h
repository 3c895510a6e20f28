// Host values as the plug-in sees them. The host owns the values and counts their references. In hosts before
// version 2016.0, the plug-in may read the named fields directly; later hosts allow access through host
// services only.
#pragma once

#include "abi/word.h"

/// A host object. Its class data starts at the object's address plus `dataOffset` of the class definition.
struct REALobjectStruct;
struct REALmemoryBlockStruct;
struct REALfolderItemStruct;

struct REALstringStruct {
    Word first;
    char* buffer; ///< buffer whose second byte starts the text; a zero byte follows the text
    Word third;
    HostInteger length; ///< length of the text in bytes
    Word encoding;      ///< encoding of the text: a HostTextEncoding
};

struct REALarrayStruct {
    Word first[7];
    void* elements; ///< address of the contiguous elements; null if the host stores the elements elsewhere
};

/// Result of the host service "PluginGetStringData". The host uses the bytes after `length`; the 64 bytes of
/// the structure are more than the host needs. Confirm the size against the host.
struct REALstringData {
    const char* bytes;
    HostInteger length;
    unsigned char bookkeeping[64 - 2 * sizeof(Word)];
};
static_assert(sizeof(REALstringData) == 64);

/// Text encodings, with the platform's numeric codes.
enum HostTextEncoding : std::uint32_t {
    encodingMacRoman = 0x0000,
    encodingUTF16 = 0x0100,
    encodingWindowsLatin1 = 0x0500,
    encodingASCII = 0x0600,
    encodingUnknown = 0xFFFF,
    encodingUTF8 = 0x08000100,
    encodingUTF32 = 0x0C000100,
};
