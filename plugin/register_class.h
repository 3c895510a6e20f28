// Registration of classes with the host.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"

/// Register one class in the class-definition layout that the host reads (CurrentREALControlVersion).
/// Shape   the data size is rounded up to a multiple of 16. For layout 9, the definition refers to copies of
///         its arrays whose elements lack the trailing fields, and `systemUse` of each static event is the
///         address of the event's copy.
/// Owner   the copies stay allocated for the life of the process.
/// Errors  none; in a host without the registration service, no class is registered.
void MyREALRegisterClass(REALclassDefinition* definition);

/// Copy `count` properties into a new array in layout 9. Returns null if there is no property or no memory.
REALproperty9* FixProperties(const REALproperty* properties, Word count);
