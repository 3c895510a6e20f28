// The library's class of devices and their properties, as this program uses it: every question is one call of
// a method of the class, and comes back with the status that the call left.
#pragma once

#include "host/kvx/text/codes.h"
#include "host/runtime/host.h"

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

struct PropertyAddress {
    ObjectID object = 0;
    Code selector = 0;
    Code scope = globalScope;
    std::uint32_t element = 0; ///< 0 the whole, then one a channel
};

/// What a call answered: bytes, or UTF-8 text; empty where the status is not 0.
struct Answer {
    Status status = 0;
    std::string value;

    bool isGood() const { return status == 0; }
};

/// The first T of a value; nothing where it is shorter.
template <class T>
std::optional<T> itemOf(std::string_view value, std::size_t index = 0)
{
    if (value.size() < (index + 1) * sizeof(T)) return std::nullopt;
    T item;
    std::memcpy(&item, value.data() + index * sizeof(T), sizeof item);
    return item;
}

/// All whole Ts of a value.
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

/// Thread  [main]
/// Errors  the platform's are statuses; what the library raises passes through as host::HostException.
class CoreAudio {
public:
    explicit CoreAudio(host::Host& host);

    /// The selector that the class publishes under that name, without regard to case; nothing where it
    /// publishes none.
    std::optional<Code> constant(std::string_view name) const;

    /// The names of all of them, in the order of registration.
    std::vector<std::string> constants() const;

    // ---- any object, by address ----

    Answer read(const PropertyAddress& address) const;

    /// Read into a buffer that already holds `question`: for values that are asked about in place. The
    /// answer is as long as the question.
    Answer read(const PropertyAddress& address, const std::string& question) const;

    /// What the property answers about `question`, as C text in memory of this program's own.
    Answer readTextFor(const PropertyAddress& address, Code question) const;

    Status write(const PropertyAddress& address, std::string_view bytes) const;

    /// The class of the object: systemClass, deviceClass, streamClass, …; the value is a Code.
    Answer classOf(ObjectID object) const;

    // ---- units, by handle; of the whole unit ----

    Answer readUnit(std::int64_t unit, std::uint32_t property) const;

    /// 0 where the unit does not know it.
    double unitParameter(std::int64_t unit, std::uint32_t parameter) const;

    // ---- by what the object is ----

    Answer readSystem(Code selector) const;
    Answer readDevice(ObjectID device, std::uint32_t channel, bool isInput, Code selector) const;

    /// The text behind a property that is a reference to one. The object's class decides which of the
    /// library's methods is called; a device without a side named is asked for its output first.
    Answer readText(const PropertyAddress& address) const;

private:
    Status lastError() const;
    Answer answer(const host::Value& result) const;
    Answer readTextOf(Code objectClass, const PropertyAddress& address, bool isInput) const;

    host::Object object_;
};

} // namespace kvx
