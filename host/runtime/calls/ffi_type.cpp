#include "host/runtime/calls/ffi_type.h"

namespace host {

ffi_type* ffiType(const Type& type)
{
    const struct {
        Base base;
        ffi_type* type;
    } rows[] = {
        // clang-format off
        {Base::none,    &ffi_type_void},
        {Base::boolean, &ffi_type_uint8},
        {Base::int8,    &ffi_type_sint8},
        {Base::int16,   &ffi_type_sint16},
        {Base::int32,   &ffi_type_sint32},
        {Base::int64,   &ffi_type_sint64},
        {Base::uint8,   &ffi_type_uint8},
        {Base::uint16,  &ffi_type_uint16},
        {Base::uint32,  &ffi_type_uint32},
        {Base::uint64,  &ffi_type_uint64},
        {Base::single,  &ffi_type_float},
        {Base::float64, &ffi_type_double},
        // clang-format on
    };
    for (const auto& row : rows) {
        if (row.base == fixedWidth(type.base) && !type.isArray) return row.type;
    }
    return &ffi_type_pointer;
}

} // namespace host
