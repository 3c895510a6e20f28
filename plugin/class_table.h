// Rows of a class table. A row that does not fit its function does not compile: the type column fixes the
// types of getter and setter, and a method's declaration must be its function's.
#pragma once

#include "abi/accessor_marks.h"
#include "abi/class_definition.h"
#include "abi/host_values.h"
#include "plugin/catch_all.h"
#include "plugin/declaration.h"

#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace table {

constexpr Word propertyFlags = 6;
constexpr Word methodFlags = 4;
constexpr Word classFlags = 4;

/// A host type by the name that property rows use, and the C++ type it is at the border.
template <class T>
struct HostType {
    const char* name;
};
constexpr HostType<HostInteger> asInteger{"Integer"};
constexpr HostType<HostBoolean> asBoolean{"Boolean"};
constexpr HostType<float> asSingle{"Single"};
constexpr HostType<double> asDouble{"Double"};
constexpr HostType<std::uint32_t> asUInt32{"UInt32"};
constexpr HostType<REALstringStruct*> asString{"String"};
constexpr HostType<REALobjectStruct*> asVariant{"Variant"};
constexpr HostType<REALobjectStruct*> asDictionary{"Dictionary"};
constexpr HostType<REALfolderItemStruct*> asFolderItem{"FolderItem"};

template <class Function>
struct ObjectFunction;
template <class Result, class... Arguments>
struct ObjectFunction<Result (*)(REALobjectStruct*, Arguments...)> {
    static constexpr bool isMethod(std::string_view text) { return declares<Result, Arguments...>(text); }
};
template <class Function>
struct SharedFunction;
template <class Result, class... Arguments>
struct SharedFunction<Result (*)(Arguments...)> {
    static constexpr bool isMethod(std::string_view text) { return declares<Result, Arguments...>(text); }
};

template <bool agree>
constexpr const char* checked(const char* declaration)
{
    static_assert(agree, "the function and its declaration differ in parameters or result");
    return declaration;
}

// ---- rows ----

template <class T>
using Getter = T (*)(REALobjectStruct*, HostInteger parameter);
template <class T>
using Setter = void (*)(REALobjectStruct*, HostInteger parameter, T value);
template <class T>
struct Same {
    using type = T;
};
constexpr std::nullptr_t readOnly = nullptr;

/// The row of any property. A getter or setter is an address here; the kinds below see to its type.
inline REALproperty propertyRow(const char* group, const char* name, const char* type, AnyFunction getter,
                                AnyFunction setter, HostInteger parameter)
{
    return {group, name, type, propertyFlags, getter, setter, parameter, nullptr, nullptr, 0, {0, 0}};
}

/// A property reached through functions.
template <class T>
REALproperty property(const char* name, HostType<T> type, typename Same<Getter<T>>::type getter,
                      typename Same<Setter<T>>::type setter)
{
    return propertyRow("", name, type.name, reinterpret_cast<AnyFunction>(getter),
                       reinterpret_cast<AnyFunction>(setter), 0);
}

/// A read-only property of the group "Constants".
template <class T>
REALproperty constant(const char* name, HostType<T> type, typename Same<Getter<T>>::type getter)
{
    return propertyRow("Constants", name, type.name, reinterpret_cast<AnyFunction>(getter), nullptr, 0);
}

enum class Access { readWrite, readOnly };

/// A field that the host reads, and perhaps writes, in the class data itself.
template <class T>
REALproperty field(const char* name, HostType<T> type, Access access, std::size_t offset)
{
    return propertyRow("", name, type.name, reinterpret_cast<AnyFunction>(REALstandardGetter),
                       reinterpret_cast<AnyFunction>(access == Access::readWrite ? REALstandardSetter : 0),
                       static_cast<HostInteger>(offset));
}

/// The same, with the type and the offset taken from the record.
#define KVX_FIELD(name, type, access, Record, member)                                                        \
    table::field<decltype(Record::member)>(name, type, table::Access::access, offsetof(Record, member))

/// A field that the host reads in the class data itself, and writes through a function; that one's parameter
/// is the field's offset.
template <class T>
REALproperty fieldWithSetter(const char* name, HostType<T> type, std::size_t offset,
                             typename Same<Setter<T>>::type setter)
{
    return propertyRow("", name, type.name, reinterpret_cast<AnyFunction>(REALstandardGetter),
                       reinterpret_cast<AnyFunction>(setter), static_cast<HostInteger>(offset));
}

/// A method row of any kind: `fits` says whether the declaration is the function's.
#define KVX_METHOD_ROW(function, declaration, fits, flags)                                                   \
    REALmethod                                                                                               \
    {                                                                                                        \
        reinterpret_cast<AnyFunction>(catchingAll<function>), nullptr, table::checked<fits>(declaration),    \
            flags,                                                                                           \
        {                                                                                                    \
            0, 0                                                                                             \
        }                                                                                                    \
    }

#define KVX_IS_METHOD(function, declaration)                                                                 \
    (table::ObjectFunction<std::decay_t<decltype(function)>>::isMethod(declaration))

/// A method of an object.
#define KVX_METHOD(function, declaration)                                                                    \
    KVX_METHOD_ROW(function, declaration, KVX_IS_METHOD(function, declaration), table::methodFlags)

/// A property with an index: a method that reads, and a setter that is given the index and the value.
#define KVX_INDEXED_PROPERTY(getter, setter, declaration)                                                    \
    table::indexedProperty<getter, setter>(table::checked<KVX_IS_METHOD(getter, declaration)>(declaration))

template <class Value, class Index>
constexpr bool isSetterOf(Value (*)(REALobjectStruct*, Index), void (*)(REALobjectStruct*, Index, Value))
{
    return true;
}

template <auto getter, auto setter>
REALmethod indexedProperty(const char* declaration)
{
    static_assert(isSetterOf(getter, setter), "the setter takes the getter's index, then the value");
    return {reinterpret_cast<AnyFunction>(catchingAll<getter>),
            reinterpret_cast<AnyFunction>(catchingAll<setter>),
            declaration,
            methodFlags,
            {0, 0}};
}

/// A method of an object whose row carries no flags.
#define KVX_FLAGLESS_METHOD(function, declaration)                                                           \
    KVX_METHOD_ROW(function, declaration, KVX_IS_METHOD(function, declaration), 0)

/// A method of the class: no object is handed over.
#define KVX_SHARED_METHOD(function, declaration)                                                             \
    KVX_METHOD_ROW(function, declaration,                                                                    \
                   (table::SharedFunction<std::decay_t<decltype(function)>>::isMethod(declaration)),         \
                   table::methodFlags)

/// A constant of the class: "Name = value".
inline REALconstant classConstant(const char* declaration) { return {declaration, {0, 0, 0, 0}}; }

// ---- the class ----

/// What the host calls when an object comes and goes; null where a class needs nothing.
struct Lifetime {
    void (*constructor)(REALobjectStruct*) = nullptr;
    void (*destructor)(REALobjectStruct*) = nullptr;
};

/// The rows of one kind with their count; empty for a class that has none.
struct Rows {
    void* first = nullptr;
    Word count = 0;

    constexpr Rows() = default;
    template <class Row, std::size_t size>
    constexpr Rows(Row (&rows)[size]) : first(rows), count(size)
    {
    }
};

/// The arrays of a class, each empty where it has none.
struct Members {
    Rows properties;
    Rows methods;
    Rows events;
    Rows sharedMethods;
    Rows constants = {};
};

/// The definition of a class without a superclass, in the newest layout.
inline REALclassDefinition classDefinition(const char* name, Word dataSize, Lifetime lifetime,
                                           Members members)
{
    REALclassDefinition definition = {};
    definition.version = newestLayout;
    definition.name = name;
    definition.dataSize = dataSize;
    definition.constructor = reinterpret_cast<AnyFunction>(lifetime.constructor);
    definition.destructor = reinterpret_cast<AnyFunction>(lifetime.destructor);
    definition.properties = members.properties.first;
    definition.propertyCount = members.properties.count;
    definition.methods = members.methods.first;
    definition.methodCount = members.methods.count;
    definition.events = members.events.first;
    definition.eventCount = members.events.count;
    definition.constants = members.constants.first;
    definition.constantCount = members.constants.count;
    definition.flags = classFlags;
    definition.sharedMethods = members.sharedMethods.first;
    definition.sharedMethodCount = members.sharedMethods.count;
    return definition;
}

} // namespace table
