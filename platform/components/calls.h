// Calls by selector: words put together and taken apart.
#pragma once

#include "platform/components/component.h"

namespace kvxplatform::components {

/// The most words a call has behind its instance.
constexpr std::size_t mostWords = 12;

/// Call a plain C function with the storage and the words of a call, as wide as `procInfo` says.
/// Errors  paramErr for a function that is null, or a word of more parameters than there can be.
ComponentResult callFunction(Handle storage, const ComponentParameters& parameters, ProcPtr function,
                             ProcInfoType procInfo);

/// Send a call on as it is.
/// Errors  badComponentInstance; badComponentSelector for an instance that answers no selectors.
ComponentResult send(ComponentInstance instance, ComponentParameters& parameters);

} // namespace kvxplatform::components
