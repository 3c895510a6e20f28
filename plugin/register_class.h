// Handing a class over to the host.
#pragma once

#include "abi/class_definition.h"

/// Register one class, in the layout that the host reads (CurrentREALControlVersion).
/// Shape   the data size is rounded up to a multiple of 16; for layout 9 the definition's arrays are replaced
///         by older copies, which live as long as the process, and each static event record's second word by
///         the address of its copy.
/// Thread  [main], while the library is loaded.
/// Errors  none are reported; a host without the service gets no class.
void MyREALRegisterClass(REALclassDefinition* definition);

/// `count` property records as layout 9 has them, newly allocated; null for no properties or no memory.
REALproperty9* FixProperties(const REALproperty* properties, Word count);
