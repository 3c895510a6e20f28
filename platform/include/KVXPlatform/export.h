/* Marks and checks that every public header shares. Preprocessor only: each header stays C and C++. */
#ifndef KVXPLATFORM_EXPORT_H
#define KVXPLATFORM_EXPORT_H

#include <stddef.h>

/* Stands before every prototype and object of the platform: the name leaves the library. */
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

/* A record's size and a field's place in bytes, as the 32-bit platform lays them out. Other builds differ
 * where pointers and long integers do. */
#define KVX_PLATFORM_SIZE(type, size)                                                                        \
    KVX_PLATFORM_ASSERT(sizeof(void*) != 4 || sizeof(type) == (size), "the platform's size of " #type)
#define KVX_PLATFORM_OFFSET(type, field, offset)                                                             \
    KVX_PLATFORM_ASSERT(sizeof(void*) != 4 || offsetof(type, field) == (offset),                             \
                        "the platform's place of " #type "." #field)

#endif
