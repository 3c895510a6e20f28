// The list of components: the built-in ones, then the registered ones. All functions: [any].
#pragma once

#include "platform/components/component.h"

namespace kvxplatform::components {

/// Returns  false for a handle that names no component.
bool find(::Component handle, Component& out);

/// Returns  the first component after `previous` (null: of all) that fits `pattern`, where a zero field fits
///          everything; null if there is none. Throws std::bad_alloc.
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
