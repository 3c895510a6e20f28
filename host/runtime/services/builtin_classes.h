// The host's own classes, and the variants that they and the services deal in.
#pragma once

#include "host/runtime/values/value.h"

struct REALobjectStruct;

namespace host {

void registerBuiltInClasses();

/// A new variant object with one reference, holding the value (nil too). Throws std::bad_alloc.
REALobjectStruct* newVariantObject(const Value& value);

} // namespace host
