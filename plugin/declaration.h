// The text by which a class declares a member, read at compile time: its parameters and its result are
// compared with a function's, type by type. Names and types have no case.
#pragma once

#include "abi/host_values.h"
#include "plugin/host_array.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace table {

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

} // namespace table
