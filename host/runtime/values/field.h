// Access to a field of the class data while another thread uses the field. The access is atomic, except the
// access to an 8-byte field that is not 8-aligned. A write publishes the writes before it; a read sees them.
// All functions: [any].
#pragma once

#include "host/runtime/values/native.h"

namespace host {

Native loadField(const void* field, const Type& type);
void storeField(void* field, const Native& native, const Type& type);

/// Replace the reference in a field. Returns the former reference, which the caller releases.
void* exchangeReference(void* field, void* reference);

} // namespace host
