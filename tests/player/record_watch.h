// Records every access to a plain record with page protection. An access causes a page fault. The signal
// handler records the access, makes the page accessible and lets the instruction run as a single step.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <vector>

namespace test {

struct Access {
    std::size_t offset; ///< offset from the start of the record, in bytes
    bool isWrite;
};

/// Memory of whole pages whose accesses can be recorded. Only one object of this class can be watched at a
/// time.
class WatchedMemory {
public:
    explicit WatchedMemory(std::size_t bytes);
    ~WatchedMemory();
    WatchedMemory(const WatchedMemory&) = delete;
    WatchedMemory& operator=(const WatchedMemory&) = delete;

    void* address() const { return memory_; }

    /// Start to record the accesses of the calling thread.
    void watch();

    /// Stop recording and return the recorded accesses.
    std::vector<Access> accesses();

private:
    void* memory_;
    std::size_t bytes_;
};

/// A plain record in watched memory, initialised to zero.
template <class Record>
class WatchedRecord : public WatchedMemory {
public:
    WatchedRecord() : WatchedMemory(sizeof(Record)) { static_assert(std::is_trivially_copyable_v<Record>); }
    Record& operator*() const { return *static_cast<Record*>(address()); }
};

} // namespace test
