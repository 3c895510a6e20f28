// Records every access to a plain record by page protection: an access faults, is recorded, and is then
// executed as a single step with the page accessible.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <vector>

namespace test {

struct Access {
    std::size_t offset; ///< bytes from the start of the record
    bool isWrite;
};

/// Whole pages of memory. Only one object can be watched at a time.
class WatchedMemory {
public:
    explicit WatchedMemory(std::size_t bytes);
    ~WatchedMemory();
    WatchedMemory(const WatchedMemory&) = delete;
    WatchedMemory& operator=(const WatchedMemory&) = delete;

    void* address() const { return memory_; }

    /// Start recording the accesses of the calling thread.
    void watch();

    /// Stop, and return the recorded accesses.
    std::vector<Access> accesses();

private:
    void* memory_;
    std::size_t bytes_;
};

/// A zeroed plain record in watched memory.
template <class Record>
class WatchedRecord : public WatchedMemory {
public:
    WatchedRecord() : WatchedMemory(sizeof(Record)) { static_assert(std::is_trivially_copyable_v<Record>); }
    Record& operator*() const { return *static_cast<Record*>(address()); }
};

} // namespace test
