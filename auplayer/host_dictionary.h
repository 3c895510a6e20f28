// Writing into a host Dictionary.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"

namespace auplayer {

/// Store the variant `value` under the variant `key`; nothing happens if the dictionary lacks the method.
void storeInDictionary(REALobjectStruct* dictionary, REALobjectStruct* key, REALobjectStruct* value);

/// Drop the cached methods, before another dictionary can be created at the same address.
void forgetDictionary();

} // namespace auplayer
