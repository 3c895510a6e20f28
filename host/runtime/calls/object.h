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

/// A program's handler of an event. It receives the arguments of the event's declaration; its result is
/// converted to the declared type. An exception of the handler reaches the program after the plug-in has
/// returned (see Host::rethrow).
using EventHandler = std::function<Value(Object& sender, const std::vector<Value>& arguments)>;

/// Collect the arguments of a call.
template <class... Arguments>
std::vector<Argument> argumentList(Arguments&&... arguments)
{
    std::vector<Argument> list;
    list.reserve(sizeof...(arguments));
    (list.emplace_back(std::forward<Arguments>(arguments)), ...);
    return list;
}

/// A reference to an object, or nil. Names are looked up without regard to case.
///
/// Throws  ProgramError: nil object, unknown member, unsuitable arguments, write to a read-only property.
///         HostException: exception that the plug-in raised during the call; the result is dropped.
/// Thread  [main]. A property that is a field may be read and written on [any].
class Object : public Ref<REALobjectStruct> {
public:
    static constexpr Kind kind = Kind::object;
    using Ref::Ref;
    Object(Ref<REALobjectStruct> ref) : Ref(std::move(ref)) {}

    using Ref::get; ///< get() without a name returns the handle of the object.

    const ClassInfo& classInfo() const;

    Value get(std::string_view property) const;
    void set(std::string_view property, const Value& value) const;

    /// Read or write an indexed property: a method with a setter, or a method with an "Assigns" parameter.
    Value get(std::string_view property, const Value& index) const;
    void set(std::string_view property, const Value& index, const Value& value) const;

    /// Call a method. Trailing arguments that have defaults may be missing. byref(variable) passes a variable
    /// that the method may change. chooseOverload() chooses between methods of the same name.
    template <class... Arguments>
    Value call(std::string_view method, Arguments&&... arguments) const
    {
        return callWith(method, argumentList(std::forward<Arguments>(arguments)...));
    }
    Value callWith(std::string_view method, const std::vector<Argument>& arguments) const;

    /// Attach a handler to an event, in place of the former handler; an empty handler detaches the former
    /// one. The object keeps the handler.
    void on(std::string_view event, EventHandler handler) const;

    /// The class data of the object's class, or of one of its superclasses, inside the object.
    void* classData(const ClassInfo& info) const;
    void* classData() const { return classData(classInfo()); }
};

/// Make an object: zero the class data, run the constructor functions, superclass first, then the method
/// "Constructor" that fits the arguments. Throws as Object; a partly constructed object is destroyed.
Object createObject(const ClassInfo& info, const std::vector<Argument>& arguments);

/// The class of a live object.
/// [main]
const ClassInfo& classOf(const void* object);

/// The object's handler of an event; null without one.
/// [main]
const EventHandler* handlerOf(REALobjectStruct* object, const EventInfo& event);

} // namespace host
