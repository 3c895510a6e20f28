// The open instances of components. All functions: [any].
#pragma once

#include "platform/components/component.h"
#include "platform/support/handle_table.h"

namespace kvxplatform::components {

using Instances = HandleTable<Instance, 1>;

/// Returns the instance of a handle, kept alive by the result; empty for a handle that names no instance.
Instances::Use use(ComponentInstance handle);

/// Open an instance of a component. After a failure `out` is null.
/// Errors  memFullErr; the family's.
OSStatus makeInstance(const Component& component, ComponentInstance& out);

/// Close an instance. Calls in progress on other threads end normally.
/// Errors  badComponentInstance.
OSStatus close(ComponentInstance handle);

} // namespace kvxplatform::components
