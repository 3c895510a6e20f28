// How many objects of a kind a caller still has to release: what a leak report shows.
#pragma once

#include <atomic>
#include <cstdint>

namespace kvxplatform {

/// One static of each kind, in the file that makes and ends its objects. Thread: [any], [audio] too.
class LiveCount {
public:
    /// `kind` lives for ever.
    explicit LiveCount(const char* kind);

    void add() { count_.fetch_add(1, std::memory_order_relaxed); }
    void remove() { count_.fetch_sub(1, std::memory_order_relaxed); }

    const char* kind() const { return kind_; }
    std::uint32_t count() const { return count_.load(std::memory_order_relaxed); }
    const LiveCount* next() const { return next_; }

private:
    const char* const kind_;
    std::atomic<std::uint32_t> count_{0};
    const LiveCount* const next_;
};

} // namespace kvxplatform
