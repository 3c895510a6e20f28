// An object that control threads replace while a render thread reads it without a lock.
#pragma once

#include "platform/support/render_scope.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

namespace kvxplatform {

/// Owns the published object and its replaced predecessors. The render thread reads the published object
/// inside a render scope, always the same one. A replaced object is freed once the render call that may use
/// it has left that scope and the render thread does not hold it; the destructor frees every object.
template <class T>
class Published {
public:
    Published() = default;
    explicit Published(std::unique_ptr<T> first) : current_(first.release()) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
    ~Published() { delete current_.load(); }

    /// Returns  the published object, valid until the render call leaves its scope; null if nothing is
    ///          published. A thread outside the scope holds the writers' lock.
    /// [any]
    T* get() const { return current_; }

    /// Keep the published object valid after this render call, until release(). The render thread can hold
    /// two objects.
    /// Returns  the object; null if nothing is published, the object is held already, or two others are held.
    /// [audio & rendering]
    T* hold()
    {
        T* const record = current_;
        std::atomic<T*>* const slot = findHeld(nullptr);
        if (!record || !slot || findHeld(record)) return nullptr;
        *slot = record;
        return record;
    }

    /// Stop holding an object, so that writers may free it at once. Null is ignored. Other
    /// threads may call it while no render call can begin.
    /// [audio & rendering]
    void release(const T* record)
    {
        if (std::atomic<T*>* const slot = findHeld(record)) *slot = nullptr;
    }

    /// Replace the published object. The caller holds the writers' lock. Throws std::bad_alloc, in which case
    /// nothing has changed.
    /// Returns  the replaced object if the render thread may still use it, valid until the next publish() or
    ///          sweep(); null if that object has been freed.
    /// [any]
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

    /// Free the replaced objects that the render thread cannot use. The caller holds the writers' lock.
    /// Returns  true if no replaced object is left.
    /// [any]
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

    // Read hasLeft() before the held objects, because a render call that found the object can still hold it
    // until that call leaves the scope.
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
    /// The objects that the render thread holds. The render thread writes the slots; writers read them.
    std::atomic<T*> held_[2] = {};
    std::vector<Retired> retired_;
};

} // namespace kvxplatform
