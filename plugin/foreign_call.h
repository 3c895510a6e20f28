// Calls of host functions through their addresses.
#pragma once

/// Attribute that disables the sanitizer of function types in a function that calls a host service. The
/// sanitizer would report a host service that returns functions of several types, because the C++ type of
/// such a service differs from the type of the call.
#if defined(__clang__)
#define KVX_FOREIGN_CALL __attribute__((no_sanitize("function")))
#else
#define KVX_FOREIGN_CALL
#endif
