// Objects as a program uses them: properties, methods and events, by name.
#pragma once

#include "abi/host_values.h"
#include "host/runtime/classes/class_info.h"
#include "host/runtime/values/value.h"

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

class Object;

/// A program's handler of an event. The handler's result is converted to the type that the event declares.
/// A C++ exception of the handler reaches the program after the plug-in has returned (see Host::rethrow).
using EventHandler = std::function<Value(Object& sender, const std::vector<Value>& arguments)>;

/// Put the arguments of a call into a list.
template <class... Arguments>
std::vector<Argument> argumentList(Arguments&&... arguments)
{
    std::vector<Argument> list;
    list.reserve(sizeof...(arguments));
    (list.emplace_back(std::forward<Arguments>(arguments)), ...);
    return list;
}

/// A reference to an object, or nil. Members are found by name, without regard to case.
///
/// Errors  ProgramError for a nil object, an unknown member, unsuitable arguments, and a write to a read-only
///         property. HostException if the plug-in raises an exception during the call; the result is dropped.
/// A number or Boolean property that is a field of the class data may be read and written on any thread.
/// [main]
class Object : public Ref<REALobjectStruct> {
public:
    static constexpr Kind kind = Kind::object;
    using Ref::Ref;
    Object(Ref<REALobjectStruct> ref) : Ref(std::move(ref)) {}

    using Ref::get; ///< get() without a property name returns the address of the object.

    const ClassInfo& classInfo() const;

    Value get(std::string_view property) const;
    void set(std::string_view property, const Value& value) const;

    /// Read or write an indexed property: a method with a setter or with a parameter marked "Assigns".
    Value get(std::string_view property, const Value& index) const;
    void set(std::string_view property, const Value& index, const Value& value) const;

    /// Call a method; chooseOverload() chooses if several have this name. The last arguments may be missing
    /// if their parameters have defaults. byref(variable) passes a variable that the method may change.
    template <class... Arguments>
    Value call(std::string_view method, Arguments&&... arguments) const
    {
        return callWith(method, argumentList(std::forward<Arguments>(arguments)...));
    }
    Value callWith(std::string_view method, const std::vector<Argument>& arguments) const;

    /// Attach a handler to an event, in place of the former handler. An empty `handler` only detaches the
    /// former handler. The object owns the handler.
    void on(std::string_view event, EventHandler handler) const;

    /// The address of the class data in the object, for the object's class or one of its superclasses.
    void* classData(const ClassInfo& info) const;
    void* classData() const { return classData(classInfo()); }
};

/// Make an object: zero the class data, run the constructor functions from the root class on, then the method
/// "Constructor" that fits the arguments. An exception of a constructor destroys the object.
/// Errors  as for the class Object.
/// [main]
Object createObject(const ClassInfo& info, const std::vector<Argument>& arguments);

/// Find the handler that the program attached to an event of the object; null if there is none.
/// [main]
const EventHandler* handlerOf(REALobjectStruct* object, const EventInfo& event);

} // namespace host
