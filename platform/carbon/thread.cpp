#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

// The main thread's ID equals the process ID. The result is not cached, because a child process that fork()
// creates has another main thread.
int pthread_main_np(void) { return syscall(SYS_gettid) == getpid(); }
