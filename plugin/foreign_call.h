// Calls through function addresses of the host.
#pragma once

/// Attribute of a function that calls a host service. A service that returns functions of several types
/// does not have the exact C++ type of the call, which the sanitizer of function types would report.
#if defined(__clang__)
#define KVX_FOREIGN_CALL __attribute__((no_sanitize("function")))
#else
#define KVX_FOREIGN_CALL
#endif
