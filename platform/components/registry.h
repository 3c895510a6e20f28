// The list of components: the built-in ones, then the registered ones. All functions: [any].
#pragma once

#include "platform/components/component.h"

namespace kvxplatform::components {

/// Look up a component.
/// Returns  false for a handle that names no component.
bool find(::Component handle, Component& out);

/// Find the first component after `previous` (null: of all) that fits `pattern`. A zero field fits all
/// values. Throws std::bad_alloc. Returns  null without a fitting component.
::Component findNext(::Component previous, const ComponentDescription& pattern);

/// Open an instance of a component. After a failure `out` is null.
/// Errors  invalidComponentID; those of makeInstance().
OSStatus open(::Component component, ComponentInstance& out);

/// The number of open instances; 0 for a handle that names no component.
long countInstances(::Component component);

/// The built-in components, family by family in the order of a search.
struct BuiltIn {
    std::size_t (*count)();
    Component (*describe)(std::size_t index);
};
extern const BuiltIn builtIns[];
extern const std::size_t builtInCount;

} // namespace kvxplatform::components
