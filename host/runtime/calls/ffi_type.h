// Host types as libffi calls them.
#pragma once

#include "host/runtime/values/type.h"

#include <ffi.h>

namespace host {

/// The C type of an argument or a result; references and arrays are pointers, no result is void.
ffi_type* ffiType(const Type& type);

} // namespace host
