// The exception border: no C++ exception reaches the host, the platform or the entry function of a thread.
// All functions: [any].
#pragma once

/// Return `call()`; if it throws, return a value-initialised result (0, false, null).
template <class Call>
auto catchAll(Call&& call) noexcept -> decltype(call())
{
    try {
        return call();
    } catch (...) {
        return decltype(call())();
    }
}

/// Return `call()`; if it throws, return `fallback`.
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

/// The address of a function of the same type that calls `function` with catchAll.
template <auto function, auto... fallback>
constexpr auto catchingAll = &ExceptionBorder<function, fallback...>::call;
