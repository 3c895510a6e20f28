// The bytes of a host string.
#pragma once

#include "plugin/owned.h"

/// The bytes of `text`, as they are, with a reference held as long as this lives.
/// Owner   the host's; valid while this lives.
/// Errors  a null text, or a host without the services, gives no bytes (null, 0, or both).
/// Thread  [main].
class StringContents {
public:
    explicit StringContents(REALstringStruct* text);
    const char* bytes() const { return bytes_; }
    HostInteger count() const { return count_; }

private:
    OwnedString reference_;
    const char* bytes_ = nullptr;
    HostInteger count_ = 0;
};

/// Where the record of an older host has the bytes: its buffer's first byte is not text.
inline const char* recordBytes(const REALstringStruct* text)
{
    return text->buffer ? text->buffer + 1 : nullptr;
}
