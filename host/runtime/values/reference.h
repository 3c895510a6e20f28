// Counted references to host values. Every value that the plug-in sees - object, string, memory block, array,
// folder item, variant - is kept alive by a count; Ref holds one of them.
//
// Rules at the border: arguments are lent for the call, a result comes with one reference, which the caller
// adopts.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace host {

/// The kinds of host values that are counted. A string's data is what "PluginGetStringData" handed out.
enum class Kind { object, string, memoryBlock, array, folderItem, variant, stringData };

/// "object", "string", "memory block", ...
const char* kindName(Kind kind);

/// Whether `value` is the address of a live host value. [main]
bool isLive(const void* value);

/// The kind of a live value; throws ProgramError for any other address. [main]
Kind kindOf(const void* value);

/// Add one reference. Nil is allowed and does nothing; a dead address is noted as a misuse, and left alone.
/// [main]
void retain(const void* value);

/// Drop one reference; the last one destroys the value (an object's destructors run first). As retain. [main]
void release(const void* value);

/// How many references a live value has; 0 for nil and for dead addresses. [main]
std::size_t referenceCount(const void* value);

/// One reference to a host value, or nil. A Ref that outlives its Host drops nothing. [main]
template <class Record>
class Ref {
public:
    Ref() = default;
    Ref(std::nullptr_t) {}
    Ref(const Ref& other) : value_(other.value_) { retain(value_); }
    Ref(Ref&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
    Ref& operator=(Ref other) noexcept
    {
        std::swap(value_, other.value_);
        return *this;
    }
    ~Ref() { release(value_); }

    /// Any reference is also a reference to some value.
    template <class Other, std::enable_if_t<std::is_convertible_v<Other*, Record*>, int> = 0>
    Ref(const Ref<Other>& other) : Ref(share(other.get()))
    {
    }

    /// Take over a reference that somebody else counted (a result).
    static Ref adopt(Record* value)
    {
        Ref ref;
        ref.value_ = value;
        return ref;
    }

    /// Count a reference of one's own (an argument that is to be kept).
    static Ref share(Record* value)
    {
        retain(value);
        return adopt(value);
    }

    Record* get() const { return value_; }
    explicit operator bool() const { return value_ != nullptr; }

    /// Give the reference away: the count stays, this Ref becomes nil.
    Record* detach() { return std::exchange(value_, nullptr); }

private:
    Record* value_ = nullptr;
};

using AnyRef = Ref<void>;

} // namespace host
