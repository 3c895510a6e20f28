// The simplest way to build a host string: copy bytes, set the encoding, convert nothing.
#pragma once

#include "plugin/owned.h"

/// Returns a new host string of `length` bytes labelled with `encoding`, or null. [main]
inline OwnedString newString(const void* bytes, HostInteger length, std::uint32_t encoding)
{
    OwnedString text(REALBuildString(bytes, length));
    if (text) REALSetStringEncoding(text.get(), encoding);
    return text;
}
