// Every access to a record, caught by the processor: the page that holds it is closed, an access to it
// faults, is noted, and is then carried out alone, one instruction with the page open, before the page closes
// again.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <vector>

namespace test {

struct Access {
    std::size_t offset; ///< from the record's beginning
    bool isWrite;
};

/// Memory of its own pages that can be watched; one at a time.
class WatchedMemory {
public:
    explicit WatchedMemory(std::size_t bytes);
    ~WatchedMemory();
    WatchedMemory(const WatchedMemory&) = delete;
    WatchedMemory& operator=(const WatchedMemory&) = delete;

    void* address() const { return memory_; }

    /// Note every access from now on, of the thread that called this.
    void watch();

    /// Stop it, and return what was noted.
    std::vector<Access> accesses();

private:
    void* memory_;
    std::size_t bytes_;
};

/// A zeroed plain record there.
template <class Record>
class WatchedRecord : public WatchedMemory {
public:
    WatchedRecord() : WatchedMemory(sizeof(Record)) { static_assert(std::is_trivially_copyable_v<Record>); }
    Record& operator*() const { return *static_cast<Record*>(address()); }
};

} // namespace test
