/* Macros for every public header. Preprocessor only, so that each header is both C and C++. */
#ifndef KVXPLATFORM_EXPORT_H
#define KVXPLATFORM_EXPORT_H

#include <stddef.h>

/* Precedes the declaration of every function and object that the library exports. */
#define KVX_PLATFORM_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
#define KVX_PLATFORM_BEGIN extern "C" {
#define KVX_PLATFORM_END }
#define KVX_PLATFORM_ASSERT(condition, text) static_assert(condition, text)
#else
#define KVX_PLATFORM_BEGIN
#define KVX_PLATFORM_END
#define KVX_PLATFORM_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/*
 * Assert the size of a struct and the offset of a field, in bytes, on 32-bit targets only, because pointers
 * and long integers have other sizes on other targets.
 */
#define KVX_PLATFORM_SIZE(type, size)                                                                        \
    KVX_PLATFORM_ASSERT(sizeof(void*) != 4 || sizeof(type) == (size), "the platform's size of " #type)
#define KVX_PLATFORM_OFFSET(type, field, offset)                                                             \
    KVX_PLATFORM_ASSERT(sizeof(void*) != 4 || offsetof(type, field) == (offset),                             \
                        "the platform's offset of " #type "." #field)

#endif
