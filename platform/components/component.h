// Components, their families and their instances. Thread: [any] throughout.
#pragma once

#include "platform/support/handle_table.h"

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>

#include <initializer_list>

namespace kvxplatform::components {

struct Instance;

/// What the components of one kind have in common. A function may be null where there is nothing to do.
struct Family {
    const char* name;
    OSStatus (*open)(Instance&);  // makes its state; the handle is known and already good
    void (*close)(Instance&);     // stops whatever calls back; the handle is still good
    void (*destroy)(void* state); // nobody uses it any more

    /// A call by selector. Null: the components answer none.
    ComponentResult (*dispatch)(Instance&, ComponentParameters&) = nullptr;
};

struct Component {
    ComponentDescription description;
    const Family* family;
    const void* row;                        // the family's own description of it
    ::Component self = nullptr;             // of a program's own component
    std::atomic<long>* instances = nullptr; // how many are open, of one that does not count them itself
};

/// An open component. Its handle is the platform's ComponentInstance.
struct Instance {
    explicit Instance(const Component& component);
    Instance(const Instance&) = delete;
    ~Instance();
    const Component component;
    ComponentInstance self = nullptr;
    void* state = nullptr; // the family's
};

using Instances = HandleTable<Instance, 1>;

/// The instance behind a handle, kept whole for as long as the use lives. Thread [any], [audio] too.
Instances::Use use(ComponentInstance handle);

/// Open an instance of `component`. On failure the status says why and `out` is null.
OSStatus open(::Component component, ComponentInstance& out);

/// Close an instance. badComponentInstance for a handle that names none.
OSStatus close(ComponentInstance handle);

/// The component behind its handle; false for one that names none.
bool find(::Component handle, Component& out);

/// The first component behind `previous` (null: from the start) that `looking` describes; null when there is
/// none.
::Component findNext(::Component previous, const ComponentDescription& looking);

/// How many components `looking` describes.
UInt32 count(const ComponentDescription& looking);

/// Send a call by selector to an instance, with these words behind the instance.
/// Errors  badComponentInstance; badComponentSelector.
ComponentResult call(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words);

/// How many instances of a component are open.
long countInstances(::Component component);

/// The components that are always there, a family after the other.
struct BuiltIn {
    std::size_t (*count)();
    Component (*describe)(std::size_t index);
};
extern const BuiltIn builtIns[];
extern const std::size_t builtInCount;

} // namespace kvxplatform::components
