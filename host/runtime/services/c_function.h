// Host functions as C functions for the plug-in. No exception passes through the plug-in.
#pragma once

#include "abi/word.h"
#include "host/runtime/support/misuse.h"

#include <exception>
#include <string>

namespace host {

/// Note the exception in flight as a misuse.
inline void noteException() noexcept
{
    try {
        throw;
    } catch (const std::exception& error) {
        noteMisuse(std::string("a function of the host failed: ") + error.what());
    } catch (...) {
        noteMisuse("a function of the host failed");
    }
}

/// The C function of a host function. It notes an exception as a misuse, and returns 0, false or null.
template <auto function>
struct CFunction;

template <class Result, class... Arguments, Result (*function)(Arguments...)>
struct CFunction<function> {
    static Result call(Arguments... arguments) noexcept
    {
        try {
            return function(arguments...);
        } catch (...) {
            noteException();
        }
        return Result();
    }
};

template <auto function>
AnyFunction cFunction()
{
    return reinterpret_cast<AnyFunction>(&CFunction<function>::call);
}

} // namespace host
