// A record that one thread replaces while an audio thread reads it, without a lock on either's account.
//
// The reader is inside a slice (see render.h) when it reads. The writer swaps the pointer and keeps the old
// record until it sees that no slice runs, for then nobody can still hold it.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

namespace kvxplatform::audiounit {

template <class T>
class Published {
public:
    Published() = default;
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
    ~Published() { delete current.load(); }

    /// Null when nothing has been published. Thread [audio & in a slice], or with the writers' lock.
    const T* get() const { return current.load(std::memory_order_seq_cst); }

    /// Thread [any], with the writers' lock. `sliceRuns()` tells whether the reader is inside a slice.
    template <class SliceRuns>
    void publish(std::unique_ptr<const T> next, SliceRuns sliceRuns)
    {
        retired.reserve(retired.size() + 1); // before the swap: a failure changes nothing
        std::unique_ptr<const T> old(current.exchange(next.release(), std::memory_order_seq_cst));
        if (old) retired.push_back(std::move(old));
        if (!sliceRuns()) retired.clear();
    }

private:
    std::atomic<const T*> current{nullptr};
    std::vector<std::unique_ptr<const T>> retired;
};

} // namespace kvxplatform::audiounit
