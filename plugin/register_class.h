// Registration of classes with the host.
// All functions: [main].
#pragma once

#include "abi/class_definition.h"

/// Register one class, in the layout that the host reads (CurrentREALControlVersion).
/// Shape   the data size is rounded up to a multiple of 16. For layout 9 the definition refers to copies of
///         its arrays without the trailing words, and the second word of each static event record is the
///         address of the record's copy.
/// Owner   the copies stay allocated for the life of the process.
/// Errors  none; a host without the service gets no class.
void MyREALRegisterClass(REALclassDefinition* definition);

/// Copies of `count` property records in layout 9, newly allocated; null for no records or no memory.
REALproperty9* FixProperties(const REALproperty* properties, Word count);
