#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

// The main thread is the one whose ID is the process's. Asked of the kernel each time: a child of fork() has
// a main thread of its own.
int pthread_main_np(void) { return syscall(SYS_gettid) == getpid(); }
