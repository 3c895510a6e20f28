// C functions that wrap host functions for the plug-in. The wrappers catch all exceptions.
#pragma once

#include "abi/word.h"
#include "host/runtime/support/misuse.h"

#include <exception>
#include <string>

namespace host {

/// Note the exception that the caller is handling as a misuse. Call in a catch block.
/// [main]
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

/// The C function `call` that wraps a host function. If the host function throws, `call` notes a misuse and
/// returns 0, false or null.
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
