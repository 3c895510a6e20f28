// The exception border: wrappers that keep C++ exceptions from reaching the host, the platform or the entry
// function of a thread.
// All functions: [any].
#pragma once

/// Return `call()`. If `call` throws, return a value-initialised result (0, false, null).
template <class Call>
auto catchAll(Call&& call) noexcept -> decltype(call())
{
    try {
        return call();
    } catch (...) {
        return decltype(call())();
    }
}

/// Return `call()`. If `call` throws, return `fallback`.
template <class Call>
auto catchAll(Call&& call, decltype(call()) fallback) noexcept -> decltype(call())
{
    catchAll([&] { fallback = call(); });
    return fallback;
}

template <auto function, auto... fallback>
struct ExceptionBorder;
template <class Result, class... Arguments, Result (*function)(Arguments...), auto... fallback>
struct ExceptionBorder<function, fallback...> {
    static Result call(Arguments... arguments)
    {
        return catchAll([&] { return function(arguments...); }, fallback...);
    }
};

/// Address of a wrapper with the type of `function`. The wrapper calls `function`. If `function` throws, the
/// wrapper returns `fallback`, or a value-initialised result if there is no `fallback`.
template <auto function, auto... fallback>
constexpr auto catchingAll = &ExceptionBorder<function, fallback...>::call;
