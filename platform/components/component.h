// The records of components and their instances.
#pragma once

#include <Carbon/Carbon.h>

#include <atomic>

namespace kvxplatform::components {

struct Instance;

/// The behaviour that components of one family share. A null function does nothing.
struct Family {
    const char* name;
    OSStatus (*open)(Instance&);  ///< makes the state; the instance's handle is valid already
    void (*close)(Instance&);     ///< stops all callbacks; the instance's handle is still valid
    void (*destroy)(void* state); ///< runs after the last use of the instance

    /// A call by selector. Null: the components have no selectors.
    ComponentResult (*dispatch)(Instance&, ComponentParameters&) = nullptr;
};

struct Component {
    ComponentDescription description;
    const Family* family;
    const void* row;                        ///< the family's record of this component
    ::Component self = nullptr;             ///< the handle of a registered component; null for a built-in one
    std::atomic<long>* instances = nullptr; ///< open instances of a built-in component
};

/// An open component.
struct Instance {
    explicit Instance(const Component& component);
    Instance(const Instance&) = delete;
    ~Instance();
    const Component component;
    ComponentInstance self = nullptr;
    void* state = nullptr; ///< the family's
};

} // namespace kvxplatform::components
