#include "platform/support/silenced_streams.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace kvxplatform {
namespace {

thread_local int depth = 0; // number of live SilencedStreams objects of this thread

// Other threads read stdout and stderr without a lock. That race is harmless, because a pointer is written
// whole and both the old and the new stream stay valid. no_sanitize keeps the thread sanitizer from reporting
// the race.
__attribute__((no_sanitize("thread"))) void set(std::FILE*& variable, std::FILE* stream)
{
    variable = stream;
}

/// The filter stream of stdout or stderr.
class Filter {
public:
    explicit Filter(std::FILE*& variable) : variable_(variable)
    {
        cookie_io_functions_t functions = {};
        functions.write = write;
        filter_ = fopencookie(this, "w", functions);
        if (filter_) std::setvbuf(filter_, nullptr, _IONBF, 0);
    }

    void install()
    {
        // Without memory for a filter stream, no output is dropped.
        if (!filter_ || variable_ == filter_) return;
        original_.store(variable_, std::memory_order_release);
        set(variable_, filter_);
    }
    void remove()
    {
        if (filter_ && variable_ == filter_) set(variable_, original_.load(std::memory_order_relaxed));
    }

private:
    static ssize_t write(void* self, const char* text, std::size_t size)
    {
        if (depth > 0) return static_cast<ssize_t>(size);
        std::FILE* to = static_cast<Filter*>(self)->original_.load(std::memory_order_acquire);
        const std::size_t done = std::fwrite(text, 1, size, to);
        std::fflush(to); // the caller's fflush flushes the filter stream only
        return static_cast<ssize_t>(done);
    }

    std::FILE*& variable_;
    std::FILE* filter_; // never closed, because another thread may have copied the pointer
    std::atomic<std::FILE*> original_{nullptr};
};

struct Filters {
    std::mutex lock;
    int silencedThreads = 0;
    Filter out{stdout}, error{stderr};
};

// The filters are never destroyed, because their streams are never closed.
Filters& filters()
{
    static Filters& both = *new Filters;
    return both;
}

} // namespace

SilencedStreams::SilencedStreams()
{
    Filters& both = filters();
    if (depth++ > 0) return;
    const std::lock_guard<std::mutex> guard(both.lock);
    if (both.silencedThreads++ > 0) return;
    both.out.install();
    both.error.install();
}

SilencedStreams::~SilencedStreams()
{
    if (--depth > 0) return;
    Filters& both = filters();
    const std::lock_guard<std::mutex> guard(both.lock);
    if (--both.silencedThreads > 0) return;
    both.out.remove();
    both.error.remove();
}

} // namespace kvxplatform
