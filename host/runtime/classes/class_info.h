// What a class registered, as plain data: for callers, listings and tests. Read-only once registered.
#pragma once

#include "abi/class_definition.h"
#include "host/runtime/classes/declaration.h"
#include "host/runtime/values/value.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace host {

enum class Access {
    function, ///< the words are addresses of functions
    field,    ///< the host touches the field itself; `parameter` is its offset within the class data
};

struct PropertyInfo {
    std::string group;
    std::string name;
    std::string typeText; ///< as registered
    Type type;
    Word flags = 0;
    Access getterAccess = Access::function;
    Access setterAccess = Access::function;
    AnyFunction getter = nullptr;
    AnyFunction setter = nullptr;
    HostInteger parameter = 0;
    std::string editor;
    bool isReadOnly = false; ///< no setter
    bool isShared = false;
};

struct MethodInfo {
    std::string text; ///< the declaration as registered
    Declaration declaration;
    Word flags = 0;
    AnyFunction function = nullptr;
    AnyFunction setter = nullptr; ///< non-null: an indexed property, written by (object, index, value)
    bool isShared = false;
};

struct EventInfo {
    std::string text;
    Declaration declaration;
    Word systemUse = 0; ///< what registration wrote into the event's record
};

struct ConstantInfo {
    std::string text;
    std::string name;
    std::string typeText; ///< empty where the declaration names none
    Literal value;
};

struct ClassInfo {
    std::string name;
    std::string superName; ///< empty: none
    const ClassInfo* super = nullptr;
    bool isBuiltIn = false; ///< the host's own (Dictionary, the exceptions)
    int layout = 0;         ///< the layout it was read in, 9 to 13
    Word flags = 0;
    std::size_t dataSize = 0;   ///< bytes of this class's own data
    std::size_t dataOffset = 0; ///< from the object's address; a multiple of 16
    AnyFunction constructor = nullptr;
    AnyFunction destructor = nullptr;
    std::string interfaces;
    std::vector<PropertyInfo> properties; ///< in the order of registration, likewise below
    std::vector<PropertyInfo> sharedProperties;
    std::vector<MethodInfo> methods;
    std::vector<MethodInfo> sharedMethods;
    std::vector<EventInfo> events;
    std::vector<ConstantInfo> constants;
    std::size_t eventInstanceCount = 0;

    /// The member of that name, in this class or the nearest superclass; null where there is none.
    const PropertyInfo* property(std::string_view member) const;
    const PropertyInfo* sharedProperty(std::string_view member) const;
    const EventInfo* event(std::string_view member) const;
    const ConstantInfo* constant(std::string_view member) const;
    /// All overloads of that name, nearest class first, in order of registration.
    std::vector<const MethodInfo*> methodsNamed(std::string_view member) const;
    std::vector<const MethodInfo*> sharedMethodsNamed(std::string_view member) const;

    bool isA(std::string_view className) const; ///< this class or one it descends from
};

} // namespace host
