// Host values in the plug-in's view. The host owns them and counts their references. Before host version
// 2016.0 the plug-in may read the named words directly; later hosts allow access through services only.
#pragma once

#include "abi/word.h"

/// An object; its class data is at the object's address plus the definition's dataOffset.
struct REALobjectStruct;
struct REALmemoryBlockStruct;
struct REALfolderItemStruct;

struct REALstringStruct {
    Word first;
    char* buffer; ///< the text starts at buffer + 1; a zero byte follows its last byte
    Word third;
    HostInteger length; ///< bytes
    Word encoding;      ///< a HostTextEncoding
};

struct REALarrayStruct {
    Word first[7];
    void* elements; ///< contiguous elements; null if the host stores them elsewhere
};

/// The result of "PluginGetStringData". The host uses the bytes after the length; 64 bytes in total are more
/// than it needs. Confirm the size against the host.
struct REALstringData {
    const char* bytes;
    HostInteger length;
    unsigned char bookkeeping[64 - 2 * sizeof(Word)];
};
static_assert(sizeof(REALstringData) == 64);

/// Text encodings, with the platform's codes.
enum HostTextEncoding : std::uint32_t {
    encodingMacRoman = 0x0000,
    encodingUTF16 = 0x0100,
    encodingWindowsLatin1 = 0x0500,
    encodingASCII = 0x0600,
    encodingUnknown = 0xFFFF,
    encodingUTF8 = 0x08000100,
    encodingUTF32 = 0x0C000100,
};
