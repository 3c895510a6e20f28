// A render call in progress, for threads that must wait until it has left.
//
// A thread that takes something away from the render thread first withdraws it (clears a flag, replaces a
// pointer), then reads the scope. All operations are sequentially consistent: that thread either sees the
// render call that may still use it, or the render call finds it withdrawn.
#pragma once

#include <atomic>
#include <cstdint>

namespace kvxplatform {

class RenderScope {
public:
    /// The render call in progress at some moment, if there was one.
    using Stamp = std::uint32_t;

    /// The calling thread is inside the scope while this object lives. False if a thread is inside already:
    /// one render call at a time. Neither allocates nor blocks.
    /// [audio]
    class Entry {
    public:
        explicit Entry(RenderScope& scope);
        ~Entry();
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;
        explicit operator bool() const { return scope_ != nullptr; }

    private:
        RenderScope* scope_;
    };

    /// [any]
    Stamp now() const { return count_; }

    /// Whether the render call of that moment has left; true if there was none.
    /// [any]
    bool hasLeft(Stamp stamp) const { return stamp % 2 == 0 || count_ != stamp; }

    /// Wait until the render call in progress has left; later ones are not waited for. Returns at once when
    /// the calling thread is inside this scope.
    /// [any]
    void wait() const;

    /// Whether the calling thread is inside this scope.
    /// [any]
    bool isInside() const;

    /// Whether the calling thread is inside any scope. Such a thread must not wait for another scope, whose
    /// render thread might wait for this one.
    /// [any]
    static bool isInsideAny();

private:
    std::atomic<std::uintptr_t> thread_{0}; ///< the thread inside; 0 for none
    std::atomic<Stamp> count_{0};           ///< entries plus exits: odd while a render call is in progress
};

} // namespace kvxplatform
