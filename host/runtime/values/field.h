// Access to a field of the class data that another thread may use at the same time. Reads acquire and writes
// release atomically, except for an 8-byte field that is not 8-aligned.
// All functions: [any].
#pragma once

#include "host/runtime/values/native.h"

namespace host {

Native loadField(const void* field, const Type& type);
void storeField(void* field, const Native& native, const Type& type);

/// Replace the reference in a field. Return the former reference, which the caller then owns.
void* exchangeReference(void* field, void* reference);

} // namespace host
