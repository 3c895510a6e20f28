// The bytes of a host string.
#pragma once

#include "plugin/owned.h"

/// The stored bytes of a host string, without conversion.
/// Owner   the host; the bytes stay valid while `reference` is held.
struct StringContents {
    OwnedString reference;
    const char* bytes = nullptr;
    HostInteger count = 0;
};

/// Read a string's bytes: by service, or from the string's record on older hosts.
/// Errors  a null text, or a host without the services, gives null bytes, a count of 0, or both.
/// [main]
StringContents REALGetStringContents(REALstringStruct* text);

/// The text in the record of an older host; the buffer's first byte is not part of the text.
/// [any]
inline const char* recordBytes(const REALstringStruct* text)
{
    return text->buffer ? text->buffer + 1 : nullptr;
}
