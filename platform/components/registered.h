// Components that programs register.
#pragma once

#include "platform/components/component.h"

#include <vector>

namespace kvxplatform::components {

/// The component behind a handle that a registration gave; false for one that names none.
bool findRegistered(::Component handle, Component& out);

/// Those registered behind `previous`, in order; null: all. Throws std::bad_alloc.
std::vector<Component> registeredBehind(::Component previous);

/// Null without memory.
::Component registerOne(const ComponentDescription& description, ComponentRoutineUPP entry);

/// Errors  invalidComponentID; validInstancesExist: it stays registered.
OSErr unregisterOne(::Component component);

/// How many instances are open; 0 for one that is not registered.
long countRegistered(::Component component);

/// The word of a component, which is named by itself or by an instance; 0 and nothing for others.
long refcon(::Component component);
void setRefcon(::Component component, long word);

/// Likewise of an instance.
Handle storage(ComponentInstance instance);
void setStorage(ComponentInstance instance, Handle word);

} // namespace kvxplatform::components
