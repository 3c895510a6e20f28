// Components that programs register. All functions: [any].
#pragma once

#include "platform/components/component.h"

#include <vector>

namespace kvxplatform::components {

/// Look up a registered component.
/// Returns  false for a handle that names no registered component.
bool findRegistered(::Component handle, Component& out);

/// The components registered after `previous` (null: all), in order. Throws std::bad_alloc.
std::vector<Component> registeredAfter(::Component previous);

/// Register a component. Throws std::bad_alloc.
/// Returns  null if the table is full.
::Component registerOne(const ComponentDescription& description, ComponentRoutineUPP entry);

/// Errors  invalidComponentID; validInstancesExist, and the component stays registered.
OSErr unregisterOne(::Component component);

/// The number of open instances; 0 for a handle that names no registered component.
long countRegisteredInstances(::Component component);

/// The refcon of a component, named by its own handle or an instance's. For other handles 0 and no effect.
long refcon(::Component component);
void setRefcon(::Component component, long word);

/// The storage of an instance of a registered component. For other handles null and no effect.
Handle storage(ComponentInstance instance);
void setStorage(ComponentInstance instance, Handle word);

} // namespace kvxplatform::components
