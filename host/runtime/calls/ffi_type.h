// The libffi types of the host's types.
#pragma once

#include "host/runtime/values/type.h"

#include <ffi.h>

namespace host {

/// The libffi type of an argument or a result. A reference or an array is a pointer; Base::none is void.
/// [any]
ffi_type* ffiType(const Type& type);

} // namespace host
