// Rows of a class table. A row that does not fit its function does not compile: the type column fixes the
// types of getter and setter, and a declaration's parameters and result are compared with its function's,
// type by type.
#pragma once

#include "abi/accessor_marks.h"
#include "abi/class_definition.h"
#include "abi/host_values.h"
#include "plugin/host_array.h"

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
constexpr HostType<REALobjectStruct*> asVariant{"Variant"};
constexpr HostType<REALobjectStruct*> asDictionary{"Dictionary"};
constexpr HostType<REALfolderItemStruct*> asFolderItem{"FolderItem"};

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
template <> inline constexpr std::string_view typeName<REALfolderItemStruct*>  = "folderitem";
template <> inline constexpr std::string_view typeName<ArrayOf<HostInteger>*>  = "integer()";
template <> inline constexpr std::string_view typeName<ArrayOf<float>*>        = "single()";
template <> inline constexpr std::string_view typeName<ArrayOf<double>*>       = "double()";
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

constexpr bool endsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && sameName(from(text, text.size() - end.size()), end);
}

constexpr std::size_t placeOfAs(std::string_view text)
{
    for (std::size_t place = 0; place < text.size(); ++place)
        if (startsWith(from(text, place), " as ")) return place;
    return text.npos;
}

constexpr std::string_view arrayMark = "()"; // behind a parameter's name, or behind a result's type

/// The type that stands behind " as " in one parameter or result, up to its default or end; "" without one.
constexpr std::string_view typeIn(std::string_view text)
{
    const std::size_t as = placeOfAs(text);
    if (as == text.npos) return {};
    const std::string_view type = from(text, as + 4);
    return upTo(type, type.find_first_of("= ("));
}

constexpr bool isArray(std::string_view text)
{
    const std::size_t as = placeOfAs(text);
    return as != text.npos && (endsWith(upTo(text, as), arrayMark) || endsWith(text, arrayMark));
}

/// Whether one parameter or result is declared as the C++ type wants it.
template <class T>
constexpr bool isDeclaredAs(std::string_view text)
{
    constexpr std::string_view byRef = "byref ";
    constexpr bool wantsByRef = startsWith(typeName<T>, byRef);
    constexpr bool wantsArray = endsWith(typeName<T>, arrayMark);
    constexpr std::string_view type = from(typeName<T>, wantsByRef ? byRef.size() : 0);
    return startsWith(withoutLeadingBlanks(text), byRef) == wantsByRef && isArray(text) == wantsArray &&
           sameName(typeIn(text), upTo(type, type.size() - (wantsArray ? arrayMark.size() : 0)));
}

/// A declaration taken apart: parameters without their brackets, and the rest behind the name.
struct Signature {
    std::string_view parameters, result;
    bool isWhole; // every bracket has its partner
};

constexpr Signature signatureOf(std::string_view text)
{
    const std::size_t open = text.find('(');
    if (open == text.npos || open > placeOfAs(text)) // no list, or only the mark of a result that is an array
        return {{}, text, (open == text.npos) == (text.find(')') == text.npos)};
    int depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        depth += text[i] == '(' ? 1 : text[i] == ')' ? -1 : 0;
        if (depth < 0) break;
        if (depth == 0 && i > open)
            return {upTo(from(text, open + 1), i - open - 1), from(text, i + 1), true};
    }
    return {{}, text, false};
}

/// Whether `text` declares exactly this result and these parameters.
template <class Result, class... Arguments>
constexpr bool declares(std::string_view text)
{
    const Signature signature = signatureOf(text);
    if (!signature.isWhole || !isDeclaredAs<Result>(signature.result)) return false;

    std::string_view list = signature.parameters;
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

/// The same, as a value: for the getter and setter columns.
template <auto function>
constexpr auto guarded = &Border<function>::call;

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
    return {reinterpret_cast<AnyFunction>(Border<getter>::call),
            reinterpret_cast<AnyFunction>(Border<setter>::call),
            declaration,
            methodFlags,
            {0, 0}};
}

/// A method of an object whose row carries no flags.
#define KVX_FLAGLESS_METHOD(function, declaration)                                                           \
    KVX_METHOD_ROW(function, declaration, KVX_IS_METHOD(function, declaration), 0)

/// A method of the class: no object is handed over.
#define KVX_SHARED_METHOD(function, declaration)                                                             \
    KVX_METHOD_ROW(function, declaration, table::Border<function>::isSharedMethod(declaration),              \
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
