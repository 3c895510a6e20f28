// Host exceptions: they report a refused call to the host program.
//
// The host stores a raised exception and throws it when the plug-in's function returns. After raising an
// exception, the plug-in's function therefore returns at once, with 0, false or nil.
// All functions: [main], inside a call from the host.
#pragma once

/// Raise the host exception of class `className`, with the properties "Message" and "ErrorNumber" set.
/// Shape   `message` is ASCII, or null for no message. `errorNumber` is ignored: "ErrorNumber" is always 0.
/// Errors  if the host does not have the class, "RuntimeException" replaces it; if the host has neither
///         class, no exception is raised.
void RaiseException(const char* className, const char* message, unsigned long errorNumber = 0,
                    int reserved = 0);

/// Raise "OutOfBoundsException" for `value`, which is outside the range `lower` … `count` - 1. `parameter`
/// and `qualifier` name the value in the message.
void RaiseOutOfBoundsException(long long value, long long lower, long long count, const char* parameter,
                               const char* qualifier);

/// Raise the host exception that corresponds to the current C++ exception. Call only inside a catch block.
void RaiseHandledException();

/// Return `call()`. If `call` throws, raise the corresponding host exception and return a value-initialised
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
