// The bytes of a host string.
#pragma once

#include "plugin/owned.h"

/// The stored bytes of a host string, without conversion.
/// Owner   the host; the bytes are valid while `reference` is held.
struct StringContents {
    OwnedString reference;
    const char* bytes = nullptr;
    HostInteger count = 0;
};

/// Read a string's bytes, by service or, on older hosts, from its record.
/// Errors  a null text, or a host without the services, gives no bytes (null, 0, or both).
/// Thread  [main].
StringContents REALGetStringContents(REALstringStruct* text);

/// The bytes in the record of an older host: its buffer's first byte is not text.
inline const char* recordBytes(const REALstringStruct* text)
{
    return text->buffer ? text->buffer + 1 : nullptr;
}
