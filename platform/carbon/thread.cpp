#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

// The main thread has the ID of the process. The result is not cached, because a child of fork() has another
// main thread.
int pthread_main_np(void) { return syscall(SYS_gettid) == getpid(); }
