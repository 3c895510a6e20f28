// The procedures of a device: changed by anybody, read by its cycle without a lock.
#pragma once

#include "platform/hal/cycle_count.h"

#include <CoreAudio/CoreAudio.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace kvxplatform::hal {

/// A procedure registered with a device. The marks may be set at any time, in the midst of a cycle too.
struct IOProc {
    IOProc(AudioDeviceIOProc ofProc, void* ofClient, bool withOwnID)
        : proc(ofProc), client(ofClient), hasOwnID(withOwnID)
    {
    }

    const AudioDeviceIOProc proc;
    void* const client;
    const bool hasOwnID; ///< registered under an ID of its own, which is this record's address
    std::atomic<bool> isStarted{false};
    std::atomic<bool> isInputOff{false}, isOutputOff{false}; ///< it wants nothing of that side's stream
    std::atomic<bool> isRemoved{false}; ///< nobody finds it any more; freed when no cycle can be using it

    AudioDeviceIOProcID id() const
    {
        return hasOwnID ? reinterpret_cast<AudioDeviceIOProcID>(reinterpret_cast<std::uintptr_t>(this))
                        : proc;
    }
};

/// Which of several records is meant: one procedure may be there for several clients, and is then named
/// alike.
enum class Pick {
    oldest,
    newestAtRest, ///< the one added last that is not started; the oldest, if all are
};

/// Each change publishes a new row. The former one and the records that are no longer in it are kept until
/// the cycle that may be reading them has ended. The lock is held for a few instructions, never while a cycle
/// is waited for, so it may be taken inside a cycle by what allocates there anyway.
class ProcList {
public:
    using Row = std::vector<IOProc*>;

    explicit ProcList(const CycleCount& cycles) : cycles_(cycles) {}

    /// Valid until the cycle ends. [inside the cycle]
    const Row& row() const { return *row_.load(); }

    /// Inside the device's cycle: the record, or null. The one that is being called comes first: a procedure
    /// that stops or removes itself means its own client's. No lock.
    IOProc* findInCycle(AudioDeviceIOProcID id, const IOProc* called, Pick pick) const;

    /// False if the procedure is there already for this client without an ID of its own. Throws
    /// std::bad_alloc.
    bool add(std::unique_ptr<IOProc> proc);

    /// Run `use` on the record with this ID; false if there is none. It is not freed meanwhile.
    template <class Use>
    bool with(AudioDeviceIOProcID id, Pick pick, Use use)
    {
        const std::lock_guard<std::mutex> lock(lock_);
        IOProc* found = find(*row_.load(), id, pick);
        if (!found) return false;
        use(*found);
        return true;
    }

    /// Free removed records and former rows, as far as the cycle has done with them. True if nothing is left
    /// to free.
    bool sweep();

    bool isEmpty() const;

private:
    static IOProc* find(const Row& row, AudioDeviceIOProcID id, Pick pick);
    void publish(std::unique_ptr<const Row> row, std::vector<std::unique_ptr<IOProc>> gone);
    void freePassed();

    struct Retired {
        CycleCount::Stamp stamp;
        std::unique_ptr<const Row> row;
        std::vector<std::unique_ptr<IOProc>> procs;
    };

    const CycleCount& cycles_;
    mutable std::mutex lock_;
    std::vector<std::unique_ptr<IOProc>> owned_; ///< under lock, as the next
    std::vector<Retired> retired_;
    std::unique_ptr<const Row> current_ = std::make_unique<Row>();
    std::atomic<const Row*> row_{current_.get()};
};

} // namespace kvxplatform::hal
