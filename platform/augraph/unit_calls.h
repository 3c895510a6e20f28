// Calls from a graph to its units. They bypass the public functions, because a program may interpose those
// functions to observe its own calls.
#pragma once

#include "platform/audiounit/unit_handle.h"

namespace kvxplatform::augraph {

/// Run `call` on the unit that a handle names.
/// Returns  the status of `call`, or an error if the handle names no unit.
/// [any]
template <class Call>
OSStatus onUnit(AudioUnit handle, Call call)
{
    const audiounit::UnitUse unit = audiounit::use(handle);
    return unit.status ? unit.status : call(*unit);
}

} // namespace kvxplatform::augraph
