// A reference to a counted host value, with automatic retain and release.
//
// Owner  In a call between host and plug-in, the caller keeps its references to the arguments. The called
//        function adds a reference to its result; the caller adopts this reference and later releases it.
// All functions: [main].
#pragma once

#include "host/runtime/values/counted.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace host {

/// One reference to a host value, or nil. If the host is destroyed before the Ref, the Ref releases nothing.
template <class Pointee>
class Ref {
public:
    using Record = Pointee;

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

    /// Convert from a reference of another type, for example to AnyRef. Adds a reference.
    template <class Other, std::enable_if_t<std::is_convertible_v<Other*, Record*>, int> = 0>
    Ref(const Ref<Other>& other) : Ref(share(other.get()))
    {
    }

    /// Take over a reference that the caller owns, such as the reference of a call's result.
    static Ref adopt(Record* value)
    {
        Ref ref;
        ref.value_ = value;
        return ref;
    }

    /// Add a reference to a value that another owner also refers to, such as an argument.
    static Ref share(Record* value)
    {
        retain(value);
        return adopt(value);
    }

    Record* get() const { return value_; }
    explicit operator bool() const { return value_ != nullptr; }

    /// Pass the reference to the caller without releasing the value. This Ref becomes nil.
    Record* detach() { return std::exchange(value_, nullptr); }

private:
    Record* value_ = nullptr;
};

using AnyRef = Ref<void>;

/// Check an argument of a service and add a reference to it, as a Handle such as String or Array. A dead
/// address or a value of another kind makes a nil Handle and is noted as a misuse of `service`.
template <class Handle>
Handle checkedArgument(typename Handle::Record* value, const char* service)
{
    void* checked = checkedValue(value, Handle::kind, service);
    return Handle(Handle::share(static_cast<typename Handle::Record*>(checked)));
}

} // namespace host
