// A record that control threads replace while a render thread reads it without a lock.
#pragma once

#include "platform/support/render_scope.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

namespace kvxplatform {

/// The render thread reads the record inside one scope, the same at every call. Replaced records are kept
/// until the render call that may use them has left that scope and the render thread holds them no longer;
/// the destructor frees all.
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

    /// Keep the published record beyond this render call, until release(). Two records can be held.
    /// Returns  null if nothing is published, the record is held already, or two others are.
    /// [audio & rendering]
    T* hold()
    {
        T* const record = current_;
        std::atomic<T*>* const slot = findHeld(nullptr);
        if (!record || !slot || findHeld(record)) return nullptr;
        *slot = record;
        return record;
    }

    /// Stop holding a record: the writers may free it at once. Null is ignored.
    /// [audio & rendering]; [any] while no render call can begin
    void release(const T* record)
    {
        if (std::atomic<T*>* const slot = findHeld(record)) *slot = nullptr;
    }

    /// Replace the record. Throws std::bad_alloc and then changes nothing.
    /// Returns  the replaced record if the render thread may still use it, valid until the next publish() or
    ///          sweep(); null if it has been freed.
    /// [any], with the writers' lock
    T* publish(std::unique_ptr<T> next, const RenderScope& scope)
    {
        retired_.reserve(retired_.size() + 1);
        std::unique_ptr<T> former(current_.exchange(next.release()));
        const RenderScope::Stamp stamp = scope.now();
        sweep(scope);
        if (!former || isUnused(stamp, *former, scope)) return nullptr;
        retired_.push_back({stamp, std::move(former)});
        return retired_.back().record.get();
    }

    /// Free the replaced records that the render thread cannot use. True if none is left.
    /// [any], with the writers' lock
    bool sweep(const RenderScope& scope)
    {
        const auto isOver = [&](const Retired& each) { return isUnused(each.stamp, *each.record, scope); };
        retired_.erase(std::remove_if(retired_.begin(), retired_.end(), isOver), retired_.end());
        return retired_.empty();
    }

private:
    struct Retired {
        RenderScope::Stamp stamp;
        std::unique_ptr<T> record;
    };

    // The scope first: a render call that found the record before its replacement may hold it until it
    // leaves.
    bool isUnused(RenderScope::Stamp stamp, const T& record, const RenderScope& scope)
    {
        return scope.hasLeft(stamp) && !findHeld(&record);
    }

    std::atomic<T*>* findHeld(const T* record)
    {
        for (std::atomic<T*>& each : held_)
            if (each == record) return &each;
        return nullptr;
    }

    std::atomic<T*> current_{nullptr};
    std::atomic<T*> held_[2] = {}; ///< written by the render thread, read by writers
    std::vector<Retired> retired_;
};

} // namespace kvxplatform
