// What a graph asks of its units, past the public calls: a program that stands in front of those sees its own
// calls only.
#pragma once

#include "platform/audiounit/unit_handle.h"

namespace kvxplatform::augraph {

/// `call` over the unit behind a handle: its status, or the handle's when it names no unit.
template <class Call>
OSStatus onUnit(AudioUnit handle, Call call)
{
    const audiounit::UnitUse unit = audiounit::use(handle);
    return unit.status ? unit.status : call(*unit);
}

} // namespace kvxplatform::augraph
