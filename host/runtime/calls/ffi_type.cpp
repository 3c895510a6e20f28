#include "host/runtime/calls/ffi_type.h"

namespace host {

ffi_type* ffiType(const Type& type)
{
    if (type.isReference()) return &ffi_type_pointer;
    switch (fixedWidth(type.base)) {
    case Base::none:
        return &ffi_type_void;
    case Base::boolean:
    case Base::uint8:
        return &ffi_type_uint8;
    case Base::int8:
        return &ffi_type_sint8;
    case Base::int16:
        return &ffi_type_sint16;
    case Base::int32:
        return &ffi_type_sint32;
    case Base::int64:
        return &ffi_type_sint64;
    case Base::uint16:
        return &ffi_type_uint16;
    case Base::uint32:
        return &ffi_type_uint32;
    case Base::uint64:
        return &ffi_type_uint64;
    case Base::single:
        return &ffi_type_float;
    case Base::float64:
        return &ffi_type_double;
    default:
        return &ffi_type_pointer;
    }
}

} // namespace host
