// Registration of a class: makes a ClassInfo from the plug-in's class definition.
#pragma once

#include "host/runtime/classes/class_info.h"

namespace host {

/// Register a class, and write the offset of the class data and the keys of the events to `definition`.
/// Returns  the registered class; null if the host cannot use the definition.
/// Errors   a definition or member that the host cannot use is noted as a misuse; such a member is left out.
/// [main]
const ClassInfo* registerClass(REALclassDefinition& definition, int layout, bool isBuiltIn);

} // namespace host
