// The number of live objects of each kind, for leak reports.
#pragma once

#include <atomic>
#include <cstdint>

namespace kvxplatform {

/// A counter of live objects. Each kind has one static counter, in the source file that makes and destroys
/// the objects of that kind.
/// [any]
class LiveCount {
public:
    /// Register a counter. `kind`, the name in leak reports, must stay valid until the process ends.
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
