// The procedures of a device: changed by any thread, read by its cycles without a lock.
#pragma once

#include "platform/support/published.h"

#include <CoreAudio/CoreAudio.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace kvxplatform::hal {

/// A procedure registered with a device. The flags may be set at any time, also during a cycle.
struct IOProc {
    IOProc(AudioDeviceIOProc ofProc, void* ofClient, bool withUniqueID)
        : proc(ofProc), client(ofClient), hasUniqueID(withUniqueID)
    {
    }

    const AudioDeviceIOProc proc;
    void* const client;
    const bool hasUniqueID; ///< its ID is this record's address; else its ID is `proc`
    std::atomic<bool> isStarted{false};
    std::atomic<bool> isInputOff{false}, isOutputOff{false}; ///< it does not use that side's stream
    std::atomic<bool> isRemoved{false}; ///< look-ups skip it; freed when no cycle can use it

    AudioDeviceIOProcID id() const
    {
        return hasUniqueID ? reinterpret_cast<AudioDeviceIOProcID>(reinterpret_cast<std::uintptr_t>(this))
                           : proc;
    }
};

/// Which record of several with the same ID: one procedure may be registered for several clients.
enum class Pick {
    oldest,
    newestAtRest, ///< the latest that is not started; the oldest, if all are
};

/// Each change publishes a new list. A procedure is freed with the last list that has it. The lock is held
/// for a few instructions, so a procedure that adds another inside a cycle may take it.
class ProcList {
public:
    using List = std::vector<std::shared_ptr<IOProc>>;

    explicit ProcList(const RenderScope& scope) : scope_(scope) {}

    /// Valid until the render thread leaves the scope.
    /// [audio & rendering]
    const List& current() const { return *list_.get(); }

    /// Returns  the record, or null; `called`, the procedure in progress, before others of the same ID: a
    ///          procedure that stops or removes itself means its own client's record.
    /// [audio & rendering]
    IOProc* findInCycle(AudioDeviceIOProcID id, const IOProc* called, Pick pick) const;

    /// Returns  false if the procedure has no unique ID and is registered for this client already.
    /// Errors   std::bad_alloc.
    /// [any]
    bool add(std::shared_ptr<IOProc> proc);

    /// Call `use` with the record of this ID, which lives until `use` returns. False if there is none.
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

    /// Free removed procedures and replaced lists that no cycle can use. True if none is left.
    /// [any], not inside a cycle
    bool sweep();

    /// [any]
    bool isEmpty() const;

private:
    static IOProc* find(const List& list, AudioDeviceIOProcID id, Pick pick);

    const RenderScope& scope_;
    mutable std::mutex lock_; ///< of the writers
    Published<const List> list_{std::make_unique<const List>()};
};

} // namespace kvxplatform::hal
