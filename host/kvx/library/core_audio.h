// Wraps the library's class CoreAudioKVX, whose methods read and write the properties of audio objects. The
// functions return a value together with the status of the method call.
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

// ---- property values that are structs, with the layout of the platform's structs ----

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

/// A list of `count` buffers. The array is declared with one element; the other elements follow in memory.
struct BufferList {
    std::uint32_t count;
    Buffer buffers[1];
};

/// The value of a translating property: the question, and the memory for the answer. Both belong to the
/// caller.
struct Translation {
    void* question;
    std::uint32_t questionBytes;
    void* answer;
    std::uint32_t answerBytes;
};

struct ChannelLayout {
    std::uint32_t tag, bitmap, descriptionCount; ///< `descriptionCount` channel descriptions follow in memory
};

// ---- calls ----

/// The property of an object to read or to write.
struct PropertyAddress {
    ObjectID object = 0;
    Code selector = 0;
    Code scope = globalScope;
    std::uint32_t element = 0; ///< channel number, counted from 1; 0: all channels
};

/// The result of a method call. `value` contains bytes or UTF-8 text; it is empty if `status` is not 0.
struct Answer {
    Status status = 0;
    std::string value;

    bool isGood() const { return status == 0; }
};

/// Read an item of type T at the start of a value.
/// Errors  nullopt if the value is shorter than the item.
template <class T>
std::optional<T> itemOf(std::string_view value)
{
    if (value.size() < sizeof(T)) return std::nullopt;
    T item;
    std::memcpy(&item, value.data(), sizeof item);
    return item;
}

/// Read all items of a value that is an array of T. Bytes after the last whole item are ignored.
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

/// Calls the methods of one object of the class CoreAudioKVX. Errors of the platform are returned as
/// statuses; an exception of the library is thrown as host::HostException.
// All functions: [main].
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

    /// Read a property that converts or checks a value (the question). The answer has the same size.
    Answer read(const PropertyAddress& address, const std::string& question) const;

    /// Read a property that translates the four-character code `question` into C text.
    Answer readTextFor(const PropertyAddress& address, Code question) const;

    Status write(const PropertyAddress& address, std::string_view bytes) const;

    /// Read the class of an object. The value is a Code, such as deviceClass.
    Answer classOf(ObjectID object) const;

    // ---- properties and parameters of audio units, in the global scope ----

    Answer readUnit(std::int64_t unit, std::uint32_t property) const;

    /// The value of a parameter; 0 if the unit does not have the parameter.
    double unitParameter(std::int64_t unit, std::uint32_t parameter) const;

    // ---- properties of the system and of devices ----

    Answer readSystem(Code selector) const;
    Answer readDevice(ObjectID device, std::uint32_t channel, bool isInput, Code selector) const;

    /// Read a property whose value is a reference to a text. In the global scope of a device, the property of
    /// the output is read; if the device has no such property, that of the input.
    Answer readText(const PropertyAddress& address) const;

private:
    Status lastError() const;
    Answer answer(const host::Value& result) const;
    Answer readTextOf(Code objectClass, const PropertyAddress& address, bool isInput) const;

    host::Object object_;
};

} // namespace kvx
