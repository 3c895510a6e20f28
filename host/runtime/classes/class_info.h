// The registered classes as plain data, for calls, listings and tests. The data of a class is read-only after
// registration.
#pragma once

#include "abi/class_definition.h"
#include "host/runtime/classes/declaration.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct ClassInfo;

enum class Access {
    function, ///< access through a getter or a setter of the plug-in
    field,    ///< access to a field of the class data; `parameter` is the offset of the field
};

struct PropertyInfo {
    const ClassInfo* owner = nullptr; ///< class that declares the property
    std::string group;
    std::string name;
    std::string typeText; ///< type in the spelling of the registration
    Type type;
    Word flags = 0;
    Access getterAccess = Access::function;
    Access setterAccess = Access::function;
    AnyFunction getter = nullptr;
    AnyFunction setter = nullptr;
    HostInteger parameter = 0;
    std::string editor;
    bool isReadOnly = false; ///< whether the registration has no setter
};

struct MethodInfo {
    std::string text; ///< declaration in the spelling of the registration
    Declaration declaration;
    Word flags = 0;
    AnyFunction function = nullptr;
    AnyFunction setter = nullptr; ///< setter (object, index, value) of an indexed property; null for a method
};

struct EventInfo {
    const ClassInfo* owner = nullptr; ///< class that declares the event
    std::string text;                 ///< declaration in the spelling of the registration
    Declaration declaration;
    Word systemUse = 0; ///< key of the event for "GetEventInstance"
};

struct ConstantInfo {
    std::string text; ///< declaration in the spelling of the registration
    std::string name;
    std::string typeText; ///< name of the declared type; empty if the declaration has none
    Literal value;
};

struct ClassInfo {
    std::string name;
    std::string superName; ///< name of the superclass; empty without one
    const ClassInfo* super = nullptr;
    bool isBuiltIn = false; ///< whether the class is the host's own: Dictionary, the exceptions
    int layout = 0;         ///< layout of the definition, 9 to 13
    Word flags = 0;
    std::size_t dataSize = 0;   ///< size of this class's own class data, in bytes
    std::size_t dataOffset = 0; ///< offset of the class data in an object; a multiple of 16
    AnyFunction constructor = nullptr;
    AnyFunction destructor = nullptr;
    std::string interfaces;
    std::vector<PropertyInfo>
        properties; ///< properties in the order of registration; the other lists have the same order
    std::vector<PropertyInfo> sharedProperties;
    std::vector<MethodInfo> methods;
    std::vector<MethodInfo> sharedMethods;
    std::vector<EventInfo> events;
    std::vector<ConstantInfo> constants;

    /// Find a member by name in this class, then in its superclasses, nearest first; null if there is none.
    const PropertyInfo* property(std::string_view member) const;
    const PropertyInfo* sharedProperty(std::string_view member) const;
    const EventInfo* event(std::string_view member) const;
    const ConstantInfo* constant(std::string_view member) const;

    /// Find all overloads of a method, nearest class first, in the order of registration.
    std::vector<const MethodInfo*> methodsNamed(std::string_view member) const;
    std::vector<const MethodInfo*> sharedMethodsNamed(std::string_view member) const;

    /// Whether `className` is this class or one of its superclasses.
    bool isA(std::string_view className) const;
};

/// The classes of the current host, in the order of registration.
struct ClassTable {
    std::vector<std::unique_ptr<ClassInfo>> classes;
};

/// Find a class of the current host, without regard to case; null if there is none.
/// [main]
const ClassInfo* findClass(std::string_view name);

/// Find a class of the current host. Throws ProgramError with the names of all classes if there is none.
/// [main]
const ClassInfo& classNamed(std::string_view name);

} // namespace host
