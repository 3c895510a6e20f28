// A minimal host with memory blocks. The host records raised exceptions instead of throwing them.
#pragma once

#include "abi/host_values.h"

#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// A host memory block, which may have no memory.
class Block {
public:
    explicit Block(std::vector<unsigned char> bytes);
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    /// Argument for a block of `size` bytes for which "memoryBlockGetPtr" returns null.
    struct WithoutMemory {
        HostInteger size;
    };
    explicit Block(WithoutMemory absent);

    /// Make "memoryBlockGetSize" return `bytes` instead of the real size of the block.
    void setSize(HostInteger bytes);

    operator REALmemoryBlockStruct*() const { return block_; }

private:
    REALmemoryBlockStruct* block_;
};

/// Return the bytes of consecutive values in the processor's byte order.
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

/// Start a host of version 2013.04 that exports all functions except the `withheld` functions. Clears all
/// recorded calls and exceptions, and the plug-in's cached host functions.
void load(std::initializer_list<const char*> withheld = {});

/// From now on, refuse look-ups of exactly these host functions. The plug-in keeps the functions that it has
/// cached.
void withhold(std::initializer_list<const char*> names);

/// Return how often the plug-in has looked up a host function since load().
int lookUps(std::string_view name);

/// Return how often "memoryBlockGetPtr" or "memoryBlockGetSize" has been called since load().
int pointerCalls();
int sizeCalls();

/// Return the number of strings and exceptions to which the plug-in holds references. The number is 0 after
/// each call of the plug-in.
int liveValues();

} // namespace host
