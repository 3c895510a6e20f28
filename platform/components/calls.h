// Calls by selector: packing and unpacking their arguments. All functions: [any].
#pragma once

#include "platform/components/component.h"

#include <initializer_list>

namespace kvxplatform::components {

/// The maximum number of arguments of a call, without the instance.
constexpr std::size_t maxWords = 12;

/// Call a plain C function with the storage and the arguments of a call, in the widths of `procInfo`.
/// Errors  paramErr if the function is null or `procInfo` has too many parameters.
ComponentResult callFunction(Handle storage, const ComponentParameters& parameters, ProcPtr function,
                             ProcInfoType procInfo);

/// Pass a call on to an instance unchanged.
/// Errors  badComponentInstance; badComponentSelector if the instance has no selectors.
ComponentResult send(ComponentInstance instance, ComponentParameters& parameters);

/// Call a selector of an instance with these arguments.
/// Errors  as send().
ComponentResult call(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words);

} // namespace kvxplatform::components
