#include "tests/support/detach_spy.h"

#include "tests/support/sanitizers.h"

#include <atomic>
#include <pthread.h>

namespace support {

namespace {
std::atomic<int> count{0};
}

int detaches() { return count; }

} // namespace support

extern "C" {
int __real_pthread_detach(pthread_t);

int __wrap_pthread_detach(pthread_t thread)
{
    ++support::count;
    return support::hasThreadSanitizer ? 0 : __real_pthread_detach(thread);
}
}
