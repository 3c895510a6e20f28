// The data structures of components and of their open instances.
#pragma once

#include <Carbon/Carbon.h>

#include <atomic>

namespace kvxplatform::components {

struct Instance;

/// A component family: the behaviour that all audio units share, or all sound mixers, or all components that
/// programs register. A null function does nothing.
struct Family {
    const char* name;
    OSStatus (*open)(Instance&);  ///< creates the instance's state; the instance's handle is valid already
    void (*close)(Instance&);     ///< stops the instance's callbacks; the instance's handle is still valid
    void (*destroy)(void* state); ///< frees the instance's state after the last use of the instance

    /// Executes a component call. Null if the components of this family have no selectors.
    ComponentResult (*dispatch)(Instance&, ComponentParameters&) = nullptr;
};

struct Component {
    ComponentDescription description;
    const Family* family;
    const void* row;                        ///< the component family's private description of this component
    ::Component self = nullptr;             ///< the handle of a registered component; null for a built-in one
    std::atomic<long>* instances = nullptr; ///< counter of open instances, if the component has one
};

/// An open instance of a component.
struct Instance {
    explicit Instance(const Component& component);
    Instance(const Instance&) = delete;
    ~Instance();
    const Component component;
    ComponentInstance self = nullptr;
    void* state = nullptr; ///< private state that the component family's open function created
};

} // namespace kvxplatform::components
