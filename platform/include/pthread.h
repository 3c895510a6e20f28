/* The system's threads, and the one question of this platform's that the system's header lacks. */
#ifndef KVXPLATFORM_PTHREAD_H
#define KVXPLATFORM_PTHREAD_H

#pragma GCC system_header /* going on to the next header of the same name is an extension */
#include_next <pthread.h>

#include <KVXPlatform/export.h>

KVX_PLATFORM_BEGIN

/* Non-zero on the process's main thread. Thread: [any]. */
KVX_PLATFORM_EXPORT int pthread_main_np(void);

KVX_PLATFORM_END

#endif
