// Stores values in a host Dictionary.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"

namespace auplayer {

/// Store the variant `value` under the variant `key`. If the dictionary has no method for this, nothing
/// happens.
void storeInDictionary(REALobjectStruct* dictionary, REALobjectStruct* key, REALobjectStruct* value);

/// Drop the cached methods. Call this function before another dictionary can be created at the same address.
void forgetDictionary();

} // namespace auplayer
