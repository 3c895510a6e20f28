// A host as small as the player needs: memory blocks, and exceptions that are noted instead of thrown.
#pragma once

#include "abi/host_values.h"

#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// A memory block. Its bytes may be absent, as in a block that was given no memory.
class Block {
public:
    explicit Block(std::vector<unsigned char> bytes);
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    /// A block whose "memoryBlockGetPtr" is null, of `size` bytes by its own account.
    struct WithoutMemory {
        HostInteger size;
    };
    explicit Block(WithoutMemory absent);

    /// Let "memoryBlockGetSize" say something else than the bytes there are.
    void setSize(HostInteger bytes);

    operator REALmemoryBlockStruct*() const { return block_; }

private:
    REALmemoryBlockStruct* block_;
};

/// The bytes of some values, one behind the other in the processor's order.
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

/// Give the plug-in a host of version 2013.04 with every service that it needs, and forget what was noted.
/// The services named are withheld, even if the plug-in knew them already.
void load(std::initializer_list<const char*> withheld = {});

/// Withhold these services, and no others, from whoever asks from now on. What the plug-in has found it
/// keeps.
void withhold(std::initializer_list<const char*> names);

/// How often the plug-in asked for a service by name since loading.
int lookUps(std::string_view name);

/// How often "memoryBlockGetPtr" and "memoryBlockGetSize" were called since loading.
int pointersAsked();
int sizesAsked();

/// Strings and exceptions that the plug-in holds a reference to: none, once a call has returned.
int livingValues();

} // namespace host
