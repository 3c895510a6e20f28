// Registration of a class: the plug-in's definition becomes a ClassInfo.
#pragma once

#include "host/runtime/classes/class_info.h"

namespace host {

/// Register a class. Writes the offset of the class data and the keys of the events to `definition`. A member
/// that the host cannot use is left out, and noted as a misuse.
/// Returns  the class; null, with a misuse noted, if the host cannot use the definition.
/// [main]
const ClassInfo* registerClass(REALclassDefinition& definition, int layout, bool isBuiltIn);

} // namespace host
