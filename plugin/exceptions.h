// Host exceptions: what a host program sees of our refusals.
//
// The host only notes the exception; it is thrown when we return. So whoever raises returns at once, with a
// neutral result. Thread: [main], inside a call from the host.
#pragma once

/// Raise the host exception of that class, with "Message" and "ErrorNumber" set.
/// Shape   `message` is ASCII and may be null; the number that the host sees is always 0.
/// Errors  a class that the host does not know becomes "RuntimeException"; if there is none, nothing is
///         raised.
void RaiseException(const char* className, const char* message, unsigned long errorNumber = 0,
                    int reserved = 0);

/// Raise "OutOfBoundsException" for `value`, outside `lower` … `count` - 1.
void RaiseOutOfBoundsException(long long value, long long lower, long long count, const char* parameter,
                               const char* qualifier);

/// From inside a catch block: raise the host exception that stands for the C++ exception being handled.
void RaiseHandledException();
