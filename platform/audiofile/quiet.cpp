#include "platform/audiofile/quiet.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace kvxplatform::audiofile {
namespace {

thread_local int depth = 0; // of the Quiets on this thread

// Everybody reads the C library's variables without a lock, whatever we do: a pointer is written whole, and
// both of its values are good for ever. So the thread sanitizer is not to look here.
__attribute__((no_sanitize("thread"))) void set(std::FILE*& variable, std::FILE* stream)
{
    variable = stream;
}

/// One of the C library's streams, which are variables that a program may set.
class Stream {
public:
    explicit Stream(std::FILE*& ofVariable) : variable(ofVariable)
    {
        cookie_io_functions_t functions = {};
        functions.write = write;
        filtered = fopencookie(this, "w", functions);
        if (filtered) std::setvbuf(filtered, nullptr, _IONBF, 0);
    }

    void exchange()
    {
        if (!filtered || variable == filtered) return; // without memory, all is seen
        original.store(variable, std::memory_order_release);
        set(variable, filtered);
    }
    void restore()
    {
        if (filtered && variable == filtered) set(variable, original.load(std::memory_order_relaxed));
    }

private:
    static ssize_t write(void* self, const char* text, std::size_t size)
    {
        if (depth > 0) return static_cast<ssize_t>(size);
        std::FILE* to = static_cast<Stream*>(self)->original.load(std::memory_order_acquire);
        const std::size_t done = std::fwrite(text, 1, size, to);
        std::fflush(to); // who flushes now flushes the stream in front
        return static_cast<ssize_t>(done);
    }

    std::FILE*& variable;
    std::FILE* filtered; // for the life of the program: somebody may have kept its address
    std::atomic<std::FILE*> original{nullptr};
};

struct Streams {
    std::mutex lock;
    int decoding = 0; // threads
    Stream out{stdout}, error{stderr};
};

// Never destroyed, as what it has handed out.
Streams& streams()
{
    static Streams& both = *new Streams;
    return both;
}

} // namespace

Quiet::Quiet()
{
    Streams& both = streams();
    if (depth++ > 0) return;
    const std::lock_guard<std::mutex> guard(both.lock);
    if (both.decoding++ > 0) return;
    both.out.exchange();
    both.error.exchange();
}

Quiet::~Quiet()
{
    if (--depth > 0) return;
    Streams& both = streams();
    const std::lock_guard<std::mutex> guard(both.lock);
    if (--both.decoding > 0) return;
    both.out.restore();
    both.error.restore();
}

} // namespace kvxplatform::audiofile
