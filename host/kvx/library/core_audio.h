// Wraps the library's class of audio objects and their properties. Each function returns a value together
// with the status that the method call left.
#pragma once

#include "host/kvx/text/codes.h"
#include "host/runtime/host.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvx {

using ObjectID = std::uint32_t;

constexpr ObjectID systemObject = 1;
constexpr Code globalScope = 'glob', inputScope = 'inpt', outputScope = 'outp';
constexpr Code systemClass = 'asys', deviceClass = 'adev', streamClass = 'astr';

// ---- property values that are records, with the layout of the platform's own records ----

struct ValueRange {
    double minimum, maximum;
};

struct StreamFormat {
    double rate; ///< sample rate, Hz
    std::uint32_t format, flags;
    std::uint32_t bytesPerPacket, framesPerPacket, bytesPerFrame;
    std::uint32_t channels, bits;
    std::uint32_t reserved;
};

struct RangedFormat {
    StreamFormat format;
    ValueRange rates;
};

struct Buffer {
    std::uint32_t channels, bytes;
    void* data;
};

/// A list of `count` buffers. The array is declared with its first element only.
struct BufferList {
    std::uint32_t count;
    Buffer buffers[1];
};

/// A value to translate and the memory for its translation. Both blocks belong to the caller.
struct Translation {
    void* question;
    std::uint32_t questionBytes;
    void* answer;
    std::uint32_t answerBytes;
};

struct ChannelLayout {
    std::uint32_t tag, bitmap, descriptionCount; ///< the channel descriptions follow in memory
};

// ---- calls ----

struct PropertyAddress {
    ObjectID object = 0;
    Code selector = 0;
    Code scope = globalScope;
    std::uint32_t element = 0; ///< number of a channel from 1, or 0 for all channels
};

/// The result of a method call: bytes or UTF-8 text in `value`, which is empty if `status` is not 0.
struct Answer {
    Status status = 0;
    std::string value;

    bool isGood() const { return status == 0; }
};

/// The item at the start of a value.
/// Errors  nullopt if the value is shorter than the item.
template <class T>
std::optional<T> itemOf(std::string_view value)
{
    if (value.size() < sizeof(T)) return std::nullopt;
    T item;
    std::memcpy(&item, value.data(), sizeof item);
    return item;
}

/// All items of a value that is an array of T. Bytes after the last whole item are ignored.
template <class T>
std::vector<T> itemsOf(std::string_view value)
{
    std::vector<T> items(value.size() / sizeof(T));
    if (!items.empty()) std::memcpy(items.data(), value.data(), items.size() * sizeof(T));
    return items;
}

template <class T>
std::string bytesOf(const T& item)
{
    return {reinterpret_cast<const char*>(&item), sizeof item};
}

/// An object of the class CoreAudioKVX. Errors of the platform are statuses; exceptions of the library are
/// thrown as host::HostException. All functions: [main].
class CoreAudio {
public:
    explicit CoreAudio(host::Host& host);

    /// Find a selector by the name of its class constant, in upper or lower case.
    /// Errors  nullopt if no selector has this name.
    std::optional<Code> selectorNamed(std::string_view name) const;

    /// The names of the class constants that are selectors, in the order in which the class registers them.
    std::vector<std::string> selectorNames() const;

    // ---- properties of any object ----

    Answer read(const PropertyAddress& address) const;

    /// Read a property that converts or checks a value: `question` is the input, the answer has its size.
    Answer read(const PropertyAddress& address, const std::string& question) const;

    /// Read a property that translates a code into C text.
    Answer readTextFor(const PropertyAddress& address, Code question) const;

    Status write(const PropertyAddress& address, std::string_view bytes) const;

    /// Read the class of an object. The value is a Code, such as deviceClass.
    Answer classOf(ObjectID object) const;

    // ---- audio units by handle, global scope ----

    Answer readUnit(std::int64_t unit, std::uint32_t property) const;

    /// The value of a parameter; 0 if the unit does not have the parameter.
    double unitParameter(std::int64_t unit, std::uint32_t parameter) const;

    // ---- properties by the kind of object ----

    Answer readSystem(Code selector) const;
    Answer readDevice(ObjectID device, std::uint32_t channel, bool isInput, Code selector) const;

    /// Read a property whose value is a reference to a text. In the global scope, a device's output is read
    /// first, then its input.
    Answer readText(const PropertyAddress& address) const;

private:
    Status lastError() const;
    Answer answer(const host::Value& result) const;
    Answer readTextOf(Code objectClass, const PropertyAddress& address, bool isInput) const;

    host::Object object_;
};

} // namespace kvx
