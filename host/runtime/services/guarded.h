// C functions for the plug-in made from our own, through which nothing is thrown.
#pragma once

#include "host/runtime/state.h"

#include <exception>
#include <string>

namespace host {

/// What a function of the host does instead of throwing into the plug-in.
inline void noteThrown(const char* name) noexcept
{
    try {
        throw;
    } catch (const std::exception& error) {
        noteMisuse(std::string(name) + " failed: " + error.what());
    } catch (...) {
        noteMisuse(std::string(name) + " failed");
    }
}

/// The function as the plug-in gets it; a failure is noted, and the answer is then 0, false or null.
template <auto function>
struct Guarded;

template <class Result, class... Arguments, Result (*function)(Arguments...)>
struct Guarded<function> {
    static Result entry(Arguments... arguments) noexcept
    {
        try {
            return function(arguments...);
        } catch (...) {
            noteThrown("a function of the host");
        }
        return Result();
    }
};

} // namespace host
