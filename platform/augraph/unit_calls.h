// Calls from a graph to its units. They bypass the public functions, which a program may interpose to see its
// own calls.
#pragma once

#include "platform/audiounit/unit_handle.h"

namespace kvxplatform::augraph {

/// Run `call` on the unit of a handle.
/// Returns  its status, or the handle's if the handle names no unit.
/// [any]
template <class Call>
OSStatus onUnit(AudioUnit handle, Call call)
{
    const audiounit::UnitUse unit = audiounit::use(handle);
    return unit.status ? unit.status : call(*unit);
}

} // namespace kvxplatform::augraph
