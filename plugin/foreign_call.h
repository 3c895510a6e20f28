// Calls through addresses of the host's: what they do is agreed upon, what their types are called is not.
#pragma once

/// Before a function that calls one. One function of a host's may hand out functions of several types, so its
/// own type is not ours to the letter, which the sanitizer of function types would report.
#if defined(__clang__)
#define KVX_FOREIGN_CALL __attribute__((no_sanitize("function")))
#else
#define KVX_FOREIGN_CALL
#endif
