// References to counted host values.
//
// Ownership between host and plug-in: the caller keeps its references to the arguments; the callee gives one
// reference to the result away, which the caller adopts.
// All functions: [main].
#pragma once

#include "host/runtime/values/counted.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace host {

/// One reference to a host value, or nil. A Ref that outlives its host releases nothing.
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

    /// Any reference converts to AnyRef.
    template <class Other, std::enable_if_t<std::is_convertible_v<Other*, Record*>, int> = 0>
    Ref(const Ref<Other>& other) : Ref(share(other.get()))
    {
    }

    /// Take over an existing reference, such as the one of a result.
    static Ref adopt(Record* value)
    {
        Ref ref;
        ref.value_ = value;
        return ref;
    }

    /// Add a reference to a value that another owner keeps, such as an argument.
    static Ref share(Record* value)
    {
        retain(value);
        return adopt(value);
    }

    Record* get() const { return value_; }
    explicit operator bool() const { return value_ != nullptr; }

    /// Give the reference away without releasing it. This Ref becomes nil.
    Record* detach() { return std::exchange(value_, nullptr); }

private:
    Record* value_ = nullptr;
};

using AnyRef = Ref<void>;

/// Check an argument of a service and share it as a handle (String, Array, …). The handle is nil, and a
/// misuse of `service` is noted, for a dead address and for a value of another kind.
template <class Handle>
Handle checkedArgument(typename Handle::Record* value, const char* service)
{
    auto* checked = checkedValue(value, Handle::kind, service);
    return Handle(Handle::share(static_cast<typename Handle::Record*>(checked)));
}

} // namespace host
