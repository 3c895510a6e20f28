#include "platform/audiofile/quiet.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace kvxplatform::audiofile {
namespace {

thread_local int depth = 0; // of the Quiets on this thread

std::mutex lock;
int decoding = 0; // threads; under the lock
std::atomic<std::FILE*> original{nullptr};

ssize_t filter(void*, const char* text, std::size_t size)
{
    if (depth > 0) return static_cast<ssize_t>(size);
    std::FILE* to = original.load(std::memory_order_acquire);
    return static_cast<ssize_t>(std::fwrite(text, 1, size, to));
}

/// One for the life of the program: somebody may have kept its address. None without memory.
std::FILE* filtered()
{
    static std::FILE* const stream = [] {
        cookie_io_functions_t functions = {};
        functions.write = filter;
        std::FILE* made = fopencookie(nullptr, "w", functions);
        if (made) std::setvbuf(made, nullptr, _IONBF, 0);
        return made;
    }();
    return stream;
}

} // namespace

Quiet::Quiet()
{
    if (depth++ > 0) return;
    const std::lock_guard<std::mutex> guard(lock);
    if (decoding++ > 0 || !filtered() || stderr == filtered()) return;
    original.store(stderr, std::memory_order_release);
    stderr = filtered(); // a variable, which the C library lets programs set
}

Quiet::~Quiet()
{
    if (--depth > 0) return;
    const std::lock_guard<std::mutex> guard(lock);
    if (--decoding == 0 && filtered() && stderr == filtered())
        stderr = original.load(std::memory_order_relaxed);
}

} // namespace kvxplatform::audiofile
