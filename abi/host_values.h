// Host values as the plug-in sees them. All are reference-counted and owned by the host. Before version
// 2016.0 the words named here may be read directly; from then on only through services.
#pragma once

#include "abi/word.h"

/// Class data stands behind the object's address, at the offset that the host wrote into the class
/// definition.
struct REALobjectStruct;
struct REALmemoryBlockStruct;
struct REALfolderItemStruct;

struct REALstringStruct {
    Word first;
    char* buffer; ///< the bytes begin at buffer + 1; a zero follows the last byte
    Word third;
    HostInteger length; ///< bytes
    Word encoding;      ///< a code of the platform's numbering, 0xFFFF when unknown
};

struct REALarrayStruct {
    Word first[7];
    void* elements; ///< the element storage, element after element; null when the host keeps it elsewhere
};

/// Text handed out by "PluginGetStringData". What lies behind the length is the host's bookkeeping; 64 bytes
/// leave it room beyond need, to be confirmed against the host.
struct REALstringData {
    const char* bytes;
    HostInteger length;
    unsigned char bookkeeping[64 - 2 * sizeof(Word)];
};
static_assert(sizeof(REALstringData) == 64);

/// Text-encoding codes, in the platform's numbering.
enum HostTextEncoding : std::uint32_t {
    encodingMacRoman = 0x0000,
    encodingUTF16 = 0x0100,
    encodingWindowsLatin1 = 0x0500,
    encodingASCII = 0x0600,
    encodingUnknown = 0xFFFF,
    encodingUTF8 = 0x08000100,
    encodingUTF32 = 0x0C000100,
};
