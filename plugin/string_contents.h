// The bytes of a host string.
#pragma once

#include "plugin/owned.h"

/// Stored bytes of a host string, without conversion.
/// Owner   the host owns the bytes, which stay valid while `reference` is held.
struct StringContents {
    OwnedString reference;
    const char* bytes = nullptr;
    HostInteger count = 0;
};

/// Read a string's bytes, through host services or, in older hosts, from the string's structure.
/// Errors  null bytes, a count of 0 or both, if `text` is null or the host does not have the services.
/// [main]
StringContents REALGetStringContents(REALstringStruct* text);

/// Address of the text in the string structure of an older host; null if the string has no buffer. The text
/// starts at the second byte of the buffer.
/// [any]
inline const char* recordBytes(const REALstringStruct* text)
{
    return text->buffer ? text->buffer + 1 : nullptr;
}
