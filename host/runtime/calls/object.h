// Objects as a host program uses them: properties, methods, events, by name.
#pragma once

#include "host/runtime/classes/class_info.h"
#include "host/runtime/values/reference.h"
#include "host/runtime/values/value.h"

#include <functional>
#include <initializer_list>
#include <string_view>
#include <vector>

struct REALobjectStruct;

namespace host {

/// What a program attaches to an event. The arguments are those of the event's declaration; the result is
/// converted to the declared one. What it throws is kept until the host's own code runs again (see
/// Host::rethrow).
using EventHandler = std::function<Value(Object& sender, const std::vector<Value>& arguments)>;

/// A reference to an object, or nil. All names are looked up without regard to case.
///
/// Errors  ProgramError: nil object, unknown member, arguments that do not fit, writing what is read-only.
///         HostException: what the plug-in raised during the call. Results that came with it are dropped.
/// Thread  [main], but fields (properties without functions) may be read and written on [any].
class Object : public Ref<REALobjectStruct> {
public:
    using Ref::Ref;
    Object(Ref<REALobjectStruct> ref) : Ref(std::move(ref)) {}

    using Ref::get; ///< without a name: the handle itself

    const ClassInfo& classInfo() const;

    Value get(std::string_view property) const;
    void set(std::string_view property, const Value& value) const;

    /// An indexed property (a method with a setter), or a method whose last parameter is assigned.
    Value get(std::string_view property, const Value& index) const;
    void set(std::string_view property, const Value& index, const Value& value) const;

    /// Call a method. Trailing arguments with defaults may be left out; variables are lent with
    /// byref(variable). Of several methods of one name the one whose parameters fit best is taken.
    template <class... Arguments>
    Value call(std::string_view method, Arguments&&... arguments) const
    {
        std::vector<Argument> list;
        list.reserve(sizeof...(arguments));
        (list.emplace_back(std::forward<Arguments>(arguments)), ...);
        return callWith(method, list);
    }
    Value callWith(std::string_view method, const std::vector<Argument>& arguments) const;

    /// Attach a handler to an event; an empty one detaches. Handlers go with the object.
    void on(std::string_view event, EventHandler handler) const;

    /// The class data of `info` (the object's class or a superclass) inside the object.
    void* classData(const ClassInfo& info) const;
    void* classData() const { return classData(classInfo()); }
};

} // namespace host
