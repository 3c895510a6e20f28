/* The system's <pthread.h>, and one function that the system's header lacks. C. */
#ifndef KVXPLATFORM_PTHREAD_H
#define KVXPLATFORM_PTHREAD_H

#pragma GCC system_header /* #include_next is an extension */
#include_next <pthread.h>

#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

/*
 * Report whether the calling thread is the main thread of the process.
 * Returns  non-zero on the main thread; in a child process of fork, on the thread that called fork.
 * [any]
 */
KVX_PLATFORM_EXPORT int pthread_main_np(void);

KVX_PLATFORM_END

#endif
