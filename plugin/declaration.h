// Compile-time parser of method declarations: compares the declared parameters and result with those of a C++
// function. Names, types and keywords are case-insensitive.
#pragma once

#include "plugin/host_array.h"
#include "plugin/host_types.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <type_traits>

namespace table {

/// How a method declaration passes a parameter or result of C++ type `T`: an `ArrayOf<T>*` as an array, a
/// pointer to a number as a ByRef number, any other type as a value.
template <class T, class = void>
struct Passing {
    using Type = T;
    static constexpr bool isArray = false, isByRef = false;
};
template <class T>
struct Passing<ArrayOf<T>*> {
    using Type = T;
    static constexpr bool isArray = true, isByRef = false;
};
template <class T>
struct Passing<T*, std::enable_if_t<std::is_arithmetic_v<T>>> {
    using Type = T;
    static constexpr bool isArray = false, isByRef = true;
};

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

constexpr std::size_t indexOfAs(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i)
        if (startsWith(from(text, i), " as ")) return i;
    return text.npos;
}

/// Type name after " as " in the declaration of one parameter or result, without default value and brackets;
/// empty if " as " is missing.
constexpr std::string_view typeIn(std::string_view text)
{
    const std::size_t as = indexOfAs(text);
    if (as == text.npos) return {};
    const std::string_view type = from(text, as + 4);
    return upTo(type, type.find_first_of("= ("));
}

/// Whether the declared parameter or result is an array: "()" follows the parameter's name or the result's
/// type.
constexpr bool isArray(std::string_view text)
{
    const std::size_t as = indexOfAs(text);
    return as != text.npos && (endsWith(upTo(text, as), "()") || endsWith(text, "()"));
}

/// Whether `text` declares one parameter or result of C++ type `T`.
template <class T>
constexpr bool isDeclaredAs(std::string_view text)
{
    return startsWith(withoutLeadingBlanks(text), "byref ") == Passing<T>::isByRef &&
           isArray(text) == Passing<T>::isArray &&
           sameName(typeIn(text), typeName<typename Passing<T>::Type>);
}

/// A method declaration in two parts: the parameters without the brackets around them, and the text that
/// declares the result.
struct Signature {
    std::string_view parameters, result;
    bool isBalanced; ///< whether each bracket of the declaration has a counterpart
};

constexpr Signature signatureOf(std::string_view text)
{
    const std::size_t open = text.find('(');
    if (open == text.npos || open > indexOfAs(text)) // no parameters; the bracket belongs to an array result
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

/// Whether `text` declares a result of type `Result` and parameters of types `Arguments`, and nothing else.
template <class Result, class... Arguments>
constexpr bool declares(std::string_view text)
{
    const Signature signature = signatureOf(text);
    if (!signature.isBalanced || !isDeclaredAs<Result>(signature.result)) return false;

    std::string_view list = signature.parameters;
    bool atEnd = list.empty(), agree = true;
    [[maybe_unused]] const auto nextIs = [&](bool (*isRight)(std::string_view)) {
        const bool right = !atEnd && isRight(upTo(list, list.find(',')));
        atEnd = list.find(',') == list.npos;
        list = from(list, atEnd ? list.size() : list.find(',') + 1);
        return right;
    };
    ((agree = nextIs(&isDeclaredAs<Arguments>) && agree), ...);
    return agree && atEnd;
}

} // namespace table
