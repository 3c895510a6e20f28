// A minimal host: memory blocks, and exceptions that are recorded instead of thrown.
#pragma once

#include "abi/host_values.h"

#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// A memory block, with or without memory.
class Block {
public:
    explicit Block(std::vector<unsigned char> bytes);
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    /// A block of `size` bytes whose "memoryBlockGetPtr" returns null.
    struct WithoutMemory {
        HostInteger size;
    };
    explicit Block(WithoutMemory absent);

    /// Make "memoryBlockGetSize" return `bytes` instead of the real size.
    void setSize(HostInteger bytes);

    operator REALmemoryBlockStruct*() const { return block_; }

private:
    REALmemoryBlockStruct* block_;
};

/// The bytes of consecutive values in the processor's order.
template <class Value>
std::vector<unsigned char> bytesOf(const std::vector<Value>& values)
{
    std::vector<unsigned char> bytes(values.size() * sizeof(Value));
    if (!bytes.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

/// An exception that the plug-in raised.
struct Raised {
    std::string className, message;
    long errorNumber;
};
std::vector<Raised> raised();

/// Start a host of version 2013.04 with all services but the `withheld` ones. Clears all records and the
/// plug-in's cached services.
void load(std::initializer_list<const char*> withheld = {});

/// Refuse further look-ups of these services only. The plug-in keeps the services that it has cached.
void withhold(std::initializer_list<const char*> names);

/// How often the plug-in looked up a service since load().
int lookUps(std::string_view name);

/// How often "memoryBlockGetPtr" and "memoryBlockGetSize" were called since load().
int pointerCalls();
int sizeCalls();

/// The number of strings and exceptions that the plug-in holds: 0 once a call has returned.
int liveValues();

} // namespace host
