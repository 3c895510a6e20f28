// Rows of a class table. A row compiles only if its functions have the types that the row declares. The host
// calls every function of a row through a wrapper that stops C++ exceptions (exception_border.h).
// All functions: [main].
#pragma once

#include "abi/accessor_sentinels.h"
#include "abi/class_definition.h"
#include "plugin/declaration.h"
#include "plugin/exception_border.h"
#include "plugin/host_types.h"

#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace table {

constexpr Word propertyFlags = 6;
constexpr Word methodFlags = 4;
constexpr Word classFlags = 4;

template <auto function>
AnyFunction address()
{
    return reinterpret_cast<AnyFunction>(catchingAll<function>);
}

// ---- properties ----

template <class T>
using Getter = T (*)(REALobjectStruct*, HostInteger parameter);
template <class T>
using Setter = void (*)(REALobjectStruct*, HostInteger parameter, T value);

enum class FieldSetter { direct };

/// Values of the setter column that are not functions. The host cannot write a `readOnly` property; the host
/// itself writes the field of a `readWrite` property.
constexpr std::nullptr_t readOnly = nullptr;
constexpr FieldSetter readWrite = FieldSetter::direct;

template <auto getter, class T>
constexpr bool isGetterOf = std::is_convertible_v<decltype(getter), Getter<T>>;

/// Whether `setter` can be the setter of a property of type `T`; also true for `readOnly`.
template <auto setter, class T>
constexpr bool isSetterOf = std::is_convertible_v<decltype(setter), Setter<T>>;

template <auto setter>
constexpr bool isDirect = std::is_same_v<decltype(setter), FieldSetter>;

template <auto setter>
AnyFunction setterWord()
{
    if constexpr (isDirect<setter>)
        return reinterpret_cast<AnyFunction>(REALstandardSetter);
    else if constexpr (std::is_null_pointer_v<decltype(setter)>)
        return nullptr;
    else
        return address<setter>();
}

template <auto getter, auto setter, class T>
REALproperty property(const char* group, const char* name, HostType<T> type)
{
    static_assert(isGetterOf<getter, T>, "the getter differs from the type column");
    static_assert(isSetterOf<setter, T>, "the setter differs from the type column");
    return {group,   name,    type.name, propertyFlags, address<getter>(), setterWord<setter>(), 0,
            nullptr, nullptr, 0,         {0, 0}};
}

template <class T, auto setter>
REALproperty field(const char* name, HostType<T> type, std::size_t offset)
{
    static_assert(isSetterOf<setter, T> || isDirect<setter>, "the setter differs from the type column");
    const auto getter = reinterpret_cast<AnyFunction>(REALstandardGetter);
    const auto parameter = static_cast<HostInteger>(offset);
    return {"",      name,    type.name, propertyFlags, getter, setterWord<setter>(), parameter,
            nullptr, nullptr, 0,         {0, 0}};
}

/// Row of a property with functions. Arguments: name, type, getter, and a setter or `readOnly`.
#define KVX_PROPERTY(name, type, ... /* getter, setter */) table::property<__VA_ARGS__>("", name, type)

/// Row of a property whose value the host reads from a field of the class data (type `Data`, in scope).
/// Arguments: name, type, field, and `readOnly`, `readWrite` or a setter. A setter receives the field's
/// offset as `parameter`.
#define KVX_FIELD(name, type, member, setter)                                                                \
    table::field<decltype(Data::member), setter>(name, type, offsetof(Data, member))

/// Row of a read-only property in the property group "Constants". Arguments: name, type, getter.
#define KVX_CONSTANT(name, type, getter) table::property<getter, table::readOnly>("Constants", name, type)

// ---- methods ----

/// Row of a method without an object (shared method). The separate type keeps the row out of the array of
/// methods with an object.
struct SharedMethod {
    explicit SharedMethod(const REALmethod& method) : row(method) {}
    REALmethod row;
};
static_assert(sizeof(SharedMethod) == sizeof(REALmethod), "the host reads an array of REALmethod");

template <class Result, class... Arguments>
constexpr bool isMethod(Result (*)(REALobjectStruct*, Arguments...), std::string_view declaration)
{
    return declares<Result, Arguments...>(declaration);
}

template <class Result, class... Arguments>
constexpr bool isSharedMethod(Result (*)(Arguments...), std::string_view declaration)
{
    return declares<Result, Arguments...>(declaration);
}

template <class Value, class Index>
constexpr bool areIndexedAccessors(Value (*)(REALobjectStruct*, Index),
                                   void (*)(REALobjectStruct*, Index, Value))
{
    return true;
}

template <bool agree>
constexpr const char* checked(const char* declaration)
{
    static_assert(agree, "the function and its declaration differ in parameters or result");
    return declaration;
}

template <auto function>
REALmethod method(const char* declaration, Word flags = methodFlags)
{
    return {address<function>(), nullptr, declaration, flags, {0, 0}};
}

template <auto getter, auto setter>
REALmethod indexedProperty(const char* declaration)
{
    static_assert(areIndexedAccessors(getter, setter), "the setter takes the getter's index, then the value");
    return {address<getter>(), address<setter>(), declaration, methodFlags, {0, 0}};
}

#define KVX_DECLARATION_OF(function, declaration)                                                            \
    table::checked<table::isMethod(function, declaration)>(declaration)

/// Row of a method. Arguments: function, declaration.
#define KVX_METHOD(function, declaration) table::method<function>(KVX_DECLARATION_OF(function, declaration))

/// Row of a method without flags. Arguments: function, declaration.
#define KVX_FLAGLESS_METHOD(function, declaration)                                                           \
    table::method<function>(KVX_DECLARATION_OF(function, declaration), 0)

/// Row of a property with an index. Arguments: getter, setter, declaration of the getter.
#define KVX_INDEXED_PROPERTY(getter, setter, declaration)                                                    \
    table::indexedProperty<getter, setter>(KVX_DECLARATION_OF(getter, declaration))

/// Row of a method without an object (shared method). Arguments: function, declaration.
#define KVX_SHARED_METHOD(function, declaration)                                                             \
    table::SharedMethod(                                                                                     \
        table::method<function>(table::checked<table::isSharedMethod(function, declaration)>(declaration)))

/// Row of a class constant with a declaration such as "Default = 0".
inline REALconstant classConstant(const char* declaration) { return {declaration, {0, 0, 0, 0}}; }

// ---- the class ----

/// Array of rows of one type, with its length; `{}` if the class has no such row.
template <class Row>
struct Rows {
    Row* first = nullptr;
    Word count = 0;

    constexpr Rows() = default;
    template <std::size_t size>
    constexpr Rows(Row (&rows)[size]) : first(rows), count(size)
    {
    }
};

struct Members {
    Rows<REALproperty> properties;
    Rows<REALmethod> methods;
    Rows<REALevent> events = {};
    Rows<SharedMethod> sharedMethods = {};
    Rows<REALconstant> constants = {};
};

/// Address of the wrapper of a constructor or destructor; null if `function` is `nullptr`.
template <auto function>
AnyFunction lifetimeWord()
{
    static_assert(std::is_convertible_v<decltype(function), void (*)(REALobjectStruct*)>,
                  "a constructor or destructor has an object and no result");
    if constexpr (std::is_null_pointer_v<decltype(function)>)
        return nullptr;
    else
        return address<function>();
}

/// Definition of a class without a superclass, in the newest class-definition layout. `Data` is the type of
/// the class data. For a class without a constructor or destructor, that argument is `nullptr`.
template <class Data, auto constructor, auto destructor>
REALclassDefinition classDefinition(const char* name, Members members)
{
    REALclassDefinition definition = {};
    definition.version = newestLayout;
    definition.name = name;
    definition.dataSize = sizeof(Data);
    definition.constructor = lifetimeWord<constructor>();
    definition.destructor = lifetimeWord<destructor>();
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
