// The host's data types, one row per type: the C++ type and the host's name.
#pragma once

#include "abi/host_values.h"

#include <string_view>

namespace table {

/// Type column of a property row. `name` is the host's name of the type; `T` is the C++ type of getter,
/// setter and field.
template <class T>
struct HostType {
    const char* name;
};

/// Host name of the C++ type `T` in method declarations, where case is ignored. A type without a row below
/// does not compile.
template <class T>
extern const std::string_view typeName;

#define KVX_HOST_TYPE(Type, column, hostName)                                                                \
    constexpr HostType<Type> column{hostName};                                                               \
    template <>                                                                                              \
    inline constexpr std::string_view typeName<Type> = hostName;

// clang-format off
//            C++ type                type column    the host's name
KVX_HOST_TYPE(HostInteger,            asInteger,     "Integer")
KVX_HOST_TYPE(HostBoolean,            asBoolean,     "Boolean")
KVX_HOST_TYPE(float,                  asSingle,      "Single")
KVX_HOST_TYPE(double,                 asDouble,      "Double")
KVX_HOST_TYPE(std::uint32_t,          asUInt32,      "UInt32")
KVX_HOST_TYPE(std::uint64_t,          asUInt64,      "UInt64")
KVX_HOST_TYPE(REALstringStruct*,      asString,      "String")
KVX_HOST_TYPE(REALmemoryBlockStruct*, asMemoryBlock, "MemoryBlock")
KVX_HOST_TYPE(REALfolderItemStruct*,  asFolderItem,  "FolderItem")
template <> inline constexpr std::string_view typeName<void> = ""; // result type of a method without a result

// Types of properties only: two host types share one C++ type, so the C++ type does not determine the name.
constexpr HostType<REALobjectStruct*>  asVariant    {"Variant"};
constexpr HostType<REALobjectStruct*>  asDictionary {"Dictionary"};
// clang-format on

#undef KVX_HOST_TYPE

} // namespace table
