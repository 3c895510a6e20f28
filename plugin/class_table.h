// Rows of a class table. A row that does not fit its function does not compile: the type column fixes the
// types of getter and setter, and a declaration's parameters and result are compared with its function's,
// type by type.
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace table {

constexpr Word propertyFlags = 6;
constexpr Word methodFlags = 4;
constexpr Word classFlags = 4;

/// A host type by the name that declarations use, and the C++ type it is at the border.
template <class T>
struct HostType {
    const char* name;
};
constexpr HostType<HostInteger> asInteger{"Integer"};
constexpr HostType<HostBoolean> asBoolean{"Boolean"};
constexpr HostType<float> asSingle{"Single"};
constexpr HostType<double> asDouble{"Double"};

// ---- declarations, read at compile time ----

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr bool sameName(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

/// The name by which a declaration calls a C++ type; no result has the empty name.
template <class T>
extern const std::string_view typeName; // a type without a row does not compile
template <>
inline constexpr std::string_view typeName<void> = "";
template <>
inline constexpr std::string_view typeName<HostInteger> = "integer";
template <>
inline constexpr std::string_view typeName<HostBoolean> = "boolean";
template <>
inline constexpr std::string_view typeName<float> = "single";
template <>
inline constexpr std::string_view typeName<double> = "double";
template <>
inline constexpr std::string_view typeName<REALmemoryBlockStruct*> = "memoryblock";

template <class T>
constexpr bool isCalled(std::string_view name)
{
    return sameName(name, typeName<T>);
}

/// The type that stands behind " as " in one parameter or result, up to its default or end; "" without one.
constexpr std::string_view typeIn(std::string_view text)
{
    constexpr std::string_view as = " as ";
    for (std::size_t i = 0; i + as.size() <= text.size(); ++i)
        if (sameName(text.substr(i, as.size()), as)) {
            text.remove_prefix(i + as.size());
            return text.substr(0, std::min(text.find_first_of("= "), text.size()));
        }
    return {};
}

/// Whether `text` declares exactly this result and these parameters.
template <class Result, class... Arguments>
constexpr bool declares(std::string_view text)
{
    const std::size_t open = text.find('('), close = text.rfind(')');
    const bool hasList = open != text.npos && close != text.npos;
    if (!isCalled<Result>(typeIn(hasList ? text.substr(close + 1) : text))) return false;

    std::string_view list = hasList ? text.substr(open + 1, close - open - 1) : std::string_view();
    bool agree = true;
    [[maybe_unused]] const auto takeNext = [&list](bool (*isRight)(std::string_view)) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const bool right = isRight(typeIn(list.substr(0, comma)));
        list.remove_prefix(std::min(comma + 1, list.size()));
        return right;
    };
    ((agree = takeNext(&isCalled<Arguments>) && agree), ...);
    return agree && list.empty();
}

template <class Function>
struct Declared;
template <class Result, class... Arguments>
struct Declared<Result (*)(REALobjectStruct*, Arguments...)> {
    static constexpr bool by(std::string_view text) { return declares<Result, Arguments...>(text); }
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

/// A property reached through functions.
template <class T>
REALproperty property(const char* name, HostType<T> type, typename Same<Getter<T>>::type getter,
                      typename Same<Setter<T>>::type setter)
{
    return {"",
            name,
            type.name,
            propertyFlags,
            reinterpret_cast<AnyFunction>(getter),
            reinterpret_cast<AnyFunction>(setter),
            0,
            nullptr,
            nullptr,
            0,
            {0, 0}};
}

/// A method of an object.
#define KVX_METHOD(function, declaration)                                                                    \
    REALmethod                                                                                               \
    {                                                                                                        \
        reinterpret_cast<AnyFunction>(function), nullptr,                                                    \
            table::checked<table::Declared<decltype(&function)>::by(declaration)>(declaration),              \
            table::methodFlags,                                                                              \
        {                                                                                                    \
            0, 0                                                                                             \
        }                                                                                                    \
    }

// ---- the class ----

/// What the host calls when an object comes and goes; null where a class needs nothing.
struct Lifetime {
    void (*constructor)(REALobjectStruct*);
    void (*destructor)(REALobjectStruct*);
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

/// The definition of a class without a superclass, in the newest layout.
inline REALclassDefinition classDefinition(const char* name, Word dataSize, Lifetime lifetime,
                                           Rows properties = {}, Rows methods = {})
{
    REALclassDefinition definition = {};
    definition.version = newestLayout;
    definition.name = name;
    definition.dataSize = dataSize;
    definition.constructor = reinterpret_cast<AnyFunction>(lifetime.constructor);
    definition.destructor = reinterpret_cast<AnyFunction>(lifetime.destructor);
    definition.properties = properties.first;
    definition.propertyCount = properties.count;
    definition.methods = methods.first;
    definition.methodCount = methods.count;
    definition.flags = classFlags;
    return definition;
}

} // namespace table
