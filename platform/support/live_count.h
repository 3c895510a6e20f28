// The number of live objects of each kind, for leak reports.
#pragma once

#include <atomic>
#include <cstdint>

namespace kvxplatform {

/// One static object for each kind, in the source file that makes and destroys its objects.
/// [any]
class LiveCount {
public:
    /// `kind` must outlive the program.
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
