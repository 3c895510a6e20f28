// The open instances of components.
// All functions: [any].
#pragma once

#include "platform/components/component.h"
#include "platform/support/handle_table.h"

namespace kvxplatform::components {

using Instances = HandleTable<Instance, 1>;

/// Look up an instance. The result keeps the instance alive.
/// Returns  an empty result for a handle that names no instance.
Instances::Use use(ComponentInstance handle);

/// Open an instance of a component. After a failure `out` is null.
/// Errors  memFullErr; the status of the component family's open function.
OSStatus makeInstance(const Component& component, ComponentInstance& out);

/// Close an instance. Calls that are in progress on other threads end normally.
/// Errors  badComponentInstance.
OSStatus close(ComponentInstance handle);

} // namespace kvxplatform::components
