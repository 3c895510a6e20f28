// The registered classes as plain records, for calls, listings and tests. A record does not change after the
// registration of its class.
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
    function, ///< the host calls the plug-in's getter or setter
    field,    ///< the host reads or writes a field of the class data; `parameter` is the field's offset
};

struct PropertyInfo {
    const ClassInfo* owner = nullptr; ///< class that declares the property
    std::string group;
    std::string name;
    std::string typeText; ///< type, as spelled in the class definition
    Type type;
    Word flags = 0;
    Access getterAccess = Access::function;
    Access setterAccess = Access::function;
    AnyFunction getter = nullptr;
    AnyFunction setter = nullptr;
    HostInteger parameter = 0;
    std::string editor;

    /// Whether the class definition has no setter.
    bool isReadOnly() const { return !setter; }
};

struct MethodInfo {
    std::string text; ///< declaration, as spelled in the class definition
    Declaration declaration;
    Word flags = 0;
    AnyFunction function = nullptr;
    AnyFunction setter = nullptr; ///< setter (object, index, value) of an indexed property; else null
};

struct EventInfo {
    const ClassInfo* owner = nullptr; ///< class that declares the event
    std::string text;                 ///< declaration, as spelled in the class definition
    Declaration declaration;
    Word systemUse = 0; ///< key with which the plug-in finds the event through the service "GetEventInstance"
};

struct ConstantInfo {
    std::string text; ///< declaration, as spelled in the class definition
    std::string name;
    std::string typeText; ///< name of the declared type; empty if the declaration has no type
    Literal value;
};

struct ClassInfo {
    std::string name;
    std::string superName; ///< name of the superclass; empty if the class has no superclass
    const ClassInfo* super = nullptr;
    bool isBuiltIn = false; ///< whether the host defines the class: Dictionary, the exceptions
    int layout = 0;         ///< layout of the class definition, 9 to 13
    Word flags = 0;
    std::size_t dataSize = 0;   ///< size in bytes of the class data, without that of the superclass
    std::size_t dataOffset = 0; ///< offset of the class data in an object; a multiple of 16 bytes
    AnyFunction constructor = nullptr;
    AnyFunction destructor = nullptr;
    std::string interfaces;
    /// The members of the class itself. Each list has the order of the class definition.
    std::vector<PropertyInfo> properties;
    std::vector<PropertyInfo> sharedProperties;
    std::vector<MethodInfo> methods;
    std::vector<MethodInfo> sharedMethods;
    std::vector<EventInfo> events;
    std::vector<ConstantInfo> constants;

    /// Find a member by name in this class, then in each superclass from the nearest; null if there is none.
    const PropertyInfo* property(std::string_view member) const;
    const PropertyInfo* sharedProperty(std::string_view member) const;
    const EventInfo* event(std::string_view member) const;
    const ConstantInfo* constant(std::string_view member) const;

    /// Find all methods of one name: those of this class, then those of each superclass from the nearest.
    std::vector<const MethodInfo*> methodsNamed(std::string_view member) const;
    std::vector<const MethodInfo*> sharedMethodsNamed(std::string_view member) const;

    /// Whether `className` is this class or one of its superclasses.
    bool isA(std::string_view className) const;
};

/// The classes of the current host, in the order of registration.
struct ClassTable {
    std::vector<std::unique_ptr<ClassInfo>> classes;
};

/// Find a class of the current host by name, without regard to case; null if there is none.
/// [main]
const ClassInfo* findClass(std::string_view name);

/// Find a class of the current host by name, without regard to case.
/// Errors  ProgramError with the names of all classes if there is none of this name.
/// [main]
const ClassInfo& classNamed(std::string_view name);

} // namespace host
