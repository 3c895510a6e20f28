// The render scope: a render call in progress, for threads that must wait until the call has left.
//
// A control thread that withdraws an object from the render thread first clears a flag or replaces a pointer,
// then reads the scope. All operations are sequentially consistent. So either the control thread sees the
// render call that may still use the object, or that render call finds the object withdrawn.
#pragma once

#include <atomic>
#include <cstdint>

namespace kvxplatform {

class RenderScope {
public:
    /// A moment of the scope: identifies the render call in progress at that moment, if any.
    using Stamp = std::uint32_t;

    /// Entry of the calling thread into the scope; the destructor leaves the scope. Converts to false if
    /// another render call is inside, because the scope admits one render call at a time. Neither allocates
    /// nor blocks.
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

    /// Whether the render call in progress at moment `stamp` has left the scope. True if no call was in
    /// progress then.
    /// [any]
    bool hasLeft(Stamp stamp) const { return stamp % 2 == 0 || count_ != stamp; }

    /// Wait until the render call in progress has left the scope. Does not wait for later render calls.
    /// Returns at once when the calling thread itself is inside the scope.
    /// [any]
    void wait() const;

    /// Whether the calling thread is inside this scope.
    /// [any]
    bool isInside() const;

    /// Whether the calling thread is inside any render scope. A thread inside one scope must not wait for
    /// another scope, because the other scope's render thread might be waiting for the first scope.
    /// [any]
    static bool isInsideAny();

private:
    /// Identifier of the thread inside the scope; 0 while the scope is empty.
    std::atomic<std::uintptr_t> thread_{0};
    std::atomic<Stamp> count_{0}; ///< number of entries plus exits, odd while a render call is in progress
};

} // namespace kvxplatform
