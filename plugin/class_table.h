// Rows of a class table. A row that does not fit its function does not compile: the type column fixes the
// types of getter and setter, and a declaration's parameters and result are compared with its function's,
// type by type.
#pragma once

#include "abi/accessor_marks.h"
#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <algorithm>
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

// ---- declarations, read at compile time ----

/// The name by which a declaration calls a C++ type; no result has the empty name.
template <class T>
extern const std::string_view typeName; // a type without a row does not compile

// clang-format off
template <> inline constexpr std::string_view typeName<void>                   = "";
template <> inline constexpr std::string_view typeName<HostInteger>            = "integer";
template <> inline constexpr std::string_view typeName<HostBoolean>            = "boolean";
template <> inline constexpr std::string_view typeName<float>                  = "single";
template <> inline constexpr std::string_view typeName<double>                 = "double";
template <> inline constexpr std::string_view typeName<std::uint32_t>          = "uint32";
template <> inline constexpr std::string_view typeName<std::uint64_t>          = "uint64";
template <> inline constexpr std::string_view typeName<REALstringStruct*>      = "string";
template <> inline constexpr std::string_view typeName<REALmemoryBlockStruct*> = "memoryblock";
template <> inline constexpr std::string_view typeName<HostInteger*>           = "byref integer";
template <> inline constexpr std::string_view typeName<HostBoolean*>           = "byref boolean";
// clang-format on

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr bool sameName(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

constexpr bool startsWith(std::string_view text, std::string_view start)
{
    return text.size() >= start.size() && sameName(std::string_view(text.data(), start.size()), start);
}

constexpr std::string_view from(std::string_view text, std::size_t index)
{
    text.remove_prefix(std::min(index, text.size()));
    return text;
}

constexpr std::string_view upTo(std::string_view text, std::size_t index)
{
    return {text.data(), std::min(index, text.size())};
}

constexpr std::string_view withoutLeadingBlanks(std::string_view text)
{
    return from(text, text.find_first_not_of(' '));
}

/// The type that stands behind " as " in one parameter or result, up to its default or end; "" without one.
constexpr std::string_view typeIn(std::string_view text)
{
    constexpr std::string_view as = " as ";
    for (; !text.empty(); text.remove_prefix(1))
        if (startsWith(text, as)) {
            const std::string_view type = from(text, as.size());
            return upTo(type, type.find_first_of("= "));
        }
    return {};
}

/// Whether one parameter or result is declared as the C++ type wants it.
template <class T>
constexpr bool isDeclaredAs(std::string_view text)
{
    constexpr std::string_view byRef = "byref ";
    constexpr bool wantsByRef = startsWith(typeName<T>, byRef);
    return startsWith(withoutLeadingBlanks(text), byRef) == wantsByRef &&
           sameName(typeIn(text), from(typeName<T>, wantsByRef ? byRef.size() : 0));
}

/// Whether `text` declares exactly this result and these parameters.
template <class Result, class... Arguments>
constexpr bool declares(std::string_view text)
{
    const std::size_t open = text.find('('), close = text.rfind(')');
    const bool hasList = open != text.npos && close != text.npos && open < close;
    if (!hasList && (open != text.npos || close != text.npos)) return false; // a list without an end
    if (!isDeclaredAs<Result>(hasList ? from(text, close + 1) : text)) return false;

    std::string_view list = hasList ? upTo(from(text, open + 1), close - open - 1) : std::string_view();
    bool atEnd = list.empty(), agree = true;
    [[maybe_unused]] const auto takeNext = [&](bool (*isRight)(std::string_view)) {
        const bool right = !atEnd && isRight(upTo(list, list.find(',')));
        atEnd = list.find(',') == list.npos;
        list = from(list, atEnd ? list.size() : list.find(',') + 1);
        return right;
    };
    ((agree = takeNext(&isDeclaredAs<Arguments>) && agree), ...);
    return agree && atEnd;
}

/// A function as the host calls it: nothing that C++ throws gets past it. The result is then a neutral one,
/// and what the function had taken it has released on the way.
template <auto function>
struct Border;
template <class Result, class... Arguments, Result (*function)(Arguments...)>
struct Border<function> {
    static Result call(Arguments... arguments)
    {
        try {
            return function(arguments...);
        } catch (...) {
            return Result();
        }
    }
    static constexpr bool isSharedMethod(std::string_view text)
    {
        return declares<Result, Arguments...>(text);
    }
};

template <class Function>
struct ObjectFunction;
template <class Result, class... Arguments>
struct ObjectFunction<Result (*)(REALobjectStruct*, Arguments...)> {
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

/// A read-only property of the group "Constants": one getter serves many rows, each with its own parameter.
template <class T>
REALproperty constant(const char* name, HostType<T> type, typename Same<Getter<T>>::type getter,
                      HostInteger parameter)
{
    return propertyRow("Constants", name, type.name, reinterpret_cast<AnyFunction>(getter), nullptr,
                       parameter);
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

/// A method row of any kind: `fits` says whether the declaration is the function's.
#define KVX_METHOD_ROW(function, declaration, fits, flags)                                                   \
    REALmethod                                                                                               \
    {                                                                                                        \
        reinterpret_cast<AnyFunction>(table::Border<function>::call), nullptr,                               \
            table::checked<fits>(declaration), flags,                                                        \
        {                                                                                                    \
            0, 0                                                                                             \
        }                                                                                                    \
    }

#define KVX_IS_METHOD(function, declaration)                                                                 \
    (table::ObjectFunction<std::decay_t<decltype(function)>>::isMethod(declaration))

/// A method of an object.
#define KVX_METHOD(function, declaration)                                                                    \
    KVX_METHOD_ROW(function, declaration, KVX_IS_METHOD(function, declaration), table::methodFlags)

/// A method of an object whose row carries no flags.
#define KVX_FLAGLESS_METHOD(function, declaration)                                                           \
    KVX_METHOD_ROW(function, declaration, KVX_IS_METHOD(function, declaration), 0)

/// A method of the class: no object is handed over.
#define KVX_SHARED_METHOD(function, declaration)                                                             \
    KVX_METHOD_ROW(function, declaration, table::Border<function>::isSharedMethod(declaration),              \
                   table::methodFlags)

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
    definition.flags = classFlags;
    definition.sharedMethods = members.sharedMethods.first;
    definition.sharedMethodCount = members.sharedMethods.count;
    return definition;
}

} // namespace table
