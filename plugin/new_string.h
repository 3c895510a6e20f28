// A host string with text that is not converted.
#pragma once

#include "plugin/owned.h"

/// Build a host string with a copy of `length` bytes, labelled with `encoding`. Returns null if the host has
/// no memory.
/// [main]
inline OwnedString newString(const void* bytes, HostInteger length, std::uint32_t encoding)
{
    OwnedString text(REALBuildString(bytes, length));
    if (text) REALSetStringEncoding(text.get(), encoding);
    return text;
}
