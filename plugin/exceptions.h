// Host exceptions: how a host program learns of a refused call.
//
// The host records the exception and throws it when the plug-in's function returns. The caller of these
// functions therefore returns at once, with a neutral result.
// All functions: [main], inside a call from the host.
#pragma once

/// Raise the host exception of class `className`, with the properties "Message" and "ErrorNumber" set.
/// Shape   `message` is ASCII, or null for no message; the host always sees the error number 0.
/// Errors  a class that the host does not have is replaced by "RuntimeException"; if the host has neither,
///         no exception is raised.
void RaiseException(const char* className, const char* message, unsigned long errorNumber = 0,
                    int reserved = 0);

/// Raise "OutOfBoundsException" for `value`, which is outside `lower` … `count` - 1.
void RaiseOutOfBoundsException(long long value, long long lower, long long count, const char* parameter,
                               const char* qualifier);

/// Inside a catch block: raise the host exception that corresponds to the current C++ exception.
void RaiseHandledException();

/// Return `call()`. If it throws, raise the corresponding host exception and return a value-initialised
/// result.
template <class Call>
auto translateExceptions(Call&& call) -> decltype(call())
{
    try {
        return call();
    } catch (...) {
        RaiseHandledException();
        return decltype(call())();
    }
}
