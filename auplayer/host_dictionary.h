// Writing into a host Dictionary. Thread: [main].
#pragma once

#include "abi/class_definition.h"

namespace auplayer {

/// Keep the variant `value` under the variant `key`. A dictionary that has no such method is left as it is.
void storeInDictionary(REALobjectStruct* dictionary, REALobjectStruct* key, REALobjectStruct* value);

/// The dictionary that was used last may go, and another come to its address.
void forgetDictionary();

} // namespace auplayer
