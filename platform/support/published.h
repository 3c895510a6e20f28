// A record that control threads replace while a render thread reads it without a lock.
#pragma once

#include "platform/support/render_scope.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

namespace kvxplatform {

/// The render thread reads the record inside one scope, the same at every call. Replaced records are kept
/// until the render call that may use them has left that scope; the destructor frees all.
template <class T>
class Published {
public:
    Published() = default;
    explicit Published(std::unique_ptr<T> first) : current_(first.release()) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
    ~Published() { delete current_.load(); }

    /// Null when nothing is published. Valid until the render call leaves.
    /// [audio & rendering], or [any] with the writers' lock
    T* get() const { return current_; }

    /// Replace the record. Throws std::bad_alloc and then changes nothing.
    /// [any], with the writers' lock
    void publish(std::unique_ptr<T> next, const RenderScope& scope)
    {
        retired_.reserve(retired_.size() + 1);
        std::unique_ptr<T> former(current_.exchange(next.release()));
        if (former) retired_.push_back({scope.now(), std::move(former)});
        sweep(scope);
    }

    /// Free the replaced records that no render call can use. True if none is left.
    /// [any], with the writers' lock
    bool sweep(const RenderScope& scope)
    {
        const auto isUnused = [&](const Retired& each) { return scope.hasLeft(each.stamp); };
        retired_.erase(std::remove_if(retired_.begin(), retired_.end(), isUnused), retired_.end());
        return retired_.empty();
    }

private:
    struct Retired {
        RenderScope::Stamp stamp;
        std::unique_ptr<T> record;
    };

    std::atomic<T*> current_{nullptr};
    std::vector<Retired> retired_;
};

} // namespace kvxplatform
