// The list of a device's procedures: any thread may change it, and the device's cycles read it without a
// mutex.
#pragma once

#include "platform/support/published.h"

#include <CoreAudio/CoreAudio.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace kvxplatform::hal {

/// A procedure that is registered with a device. Its flags may be set at any time, also during a cycle.
struct IOProc {
    IOProc(AudioDeviceIOProc ofProc, void* ofClient, bool withUniqueID)
        : proc(ofProc), client(ofClient), hasUniqueID(withUniqueID)
    {
    }

    const AudioDeviceIOProc proc;
    void* const client;
    const bool hasUniqueID; ///< whether the ID is this object's address; otherwise the ID is `proc`
    std::atomic<bool> isStarted{false};
    /// Whether the procedure's input stream or output stream is switched off.
    std::atomic<bool> isInputOff{false}, isOutputOff{false};
    /// Whether the procedure is removed: look-ups skip it, and it is freed when no cycle can use it.
    std::atomic<bool> isRemoved{false};

    AudioDeviceIOProcID id() const
    {
        return hasUniqueID ? reinterpret_cast<AudioDeviceIOProcID>(reinterpret_cast<std::uintptr_t>(this))
                           : proc;
    }
};

/// Which IOProc is chosen if several have the same ID, because one procedure may be registered for several
/// clients.
enum class Pick {
    oldest,
    newestAtRest, ///< the IOProc added last among those that are not started; the oldest if all are started
};

/// The procedures of a device. Each change publishes a new list; a procedure is freed with the last list that
/// contains it. The mutex is held for a few instructions only, so a procedure that adds another procedure
/// inside a cycle may lock it.
class ProcList {
public:
    using List = std::vector<std::shared_ptr<IOProc>>;

    explicit ProcList(const RenderScope& scope) : scope_(scope) {}

    /// The present list, valid until the render thread leaves the scope.
    /// [audio & rendering]
    const List& current() const { return *list_.get(); }

    /// Find a procedure by its ID, inside a cycle. If the procedure in progress (`called`) has this ID, it is
    /// chosen first, because a procedure that stops or removes itself means the registration for its own
    /// client.
    /// Returns  the IOProc, or null.
    /// [audio & rendering]
    IOProc* findInCycle(AudioDeviceIOProcID id, const IOProc* called, Pick pick) const;

    /// Add a procedure.
    /// Returns  false if the procedure has no unique ID and is already registered for this client.
    /// Errors   std::bad_alloc.
    /// [any]
    bool add(std::shared_ptr<IOProc> proc);

    /// Call `use` with the IOProc of this ID, which stays valid until `use` returns. Returns false if there
    /// is none.
    /// [any]
    template <class Use>
    bool with(AudioDeviceIOProcID id, Pick pick, Use use)
    {
        const std::lock_guard<std::mutex> lock(lock_);
        IOProc* const found = find(current(), id, pick);
        if (!found) return false;
        use(*found);
        return true;
    }

    /// Free the removed procedures and replaced lists that no cycle can use. Returns true if none is left to
    /// be freed.
    /// Not inside an I/O cycle.
    /// [any]
    bool sweep();

    /// Whether no procedure is in the list.
    /// [any]
    bool isEmpty() const;

private:
    static IOProc* find(const List& list, AudioDeviceIOProcID id, Pick pick);

    const RenderScope& scope_;
    mutable std::mutex lock_; ///< mutex of the threads that change the list
    Published<const List> list_{std::make_unique<const List>()};
};

} // namespace kvxplatform::hal
