// Components that programs register, in contrast to the built-in ones.
// All functions: [any].
#pragma once

#include "platform/components/component.h"

#include <vector>

namespace kvxplatform::components {

/// Look up a registered component.
/// Returns  false for a handle that names no registered component.
bool findRegistered(::Component handle, Component& out);

/// List the components that were registered after `previous`, in the order of registration. A null `previous`
/// gives all registered components. Throws std::bad_alloc.
std::vector<Component> registeredAfter(::Component previous);

/// Register a component whose calls go to the function `entry`. Throws std::bad_alloc.
/// Returns  null if the table of registered components is full.
::Component registerOne(const ComponentDescription& description, ComponentRoutineUPP entry);

/// Unregister a component.
/// Errors  invalidComponentID; validInstancesExist if the component has open instances, and the component
///         stays registered then.
OSErr unregisterOne(::Component component);

/// Returns  the number of open instances; 0 for a handle that names no registered component.
long countRegisteredInstances(::Component component);

/// Get or set the refcon, a machine word that the program chooses, of a registered component. The handle may
/// be the component's or an instance's. For any other handle the result is 0 and the setter has no effect.
long refcon(::Component component);
void setRefcon(::Component component, long word);

/// Get or set the storage, a handle that the program chooses, of an instance of a registered component. For
/// any other instance the result is null and the setter has no effect.
Handle storage(ComponentInstance instance);
void setStorage(ComponentInstance instance, Handle word);

} // namespace kvxplatform::components
