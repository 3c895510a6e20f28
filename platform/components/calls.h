// Component calls: a selector number names the operation, and machine words hold the arguments.
// All functions: [any].
#pragma once

#include "platform/components/component.h"

#include <initializer_list>

namespace kvxplatform::components {

/// The maximum number of arguments of a component call, not counting the instance.
constexpr std::size_t maxWords = 12;

/// Call a plain C function with an instance's storage and the arguments of a component call. `procInfo`
/// describes the width of each parameter and of the result.
/// Errors  paramErr if the function is null or `procInfo` describes too many parameters.
ComponentResult callFunction(Handle storage, const ComponentParameters& parameters, ProcPtr function,
                             ProcInfoType procInfo);

/// Pass a component call on to an instance unchanged.
/// Errors  badComponentInstance; badComponentSelector if the instance's component has no selectors; the
///         status that the component returns.
ComponentResult send(ComponentInstance instance, ComponentParameters& parameters);

/// Call a selector of an instance with the arguments `words`.
/// Errors  those of send().
ComponentResult call(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words);

} // namespace kvxplatform::components
