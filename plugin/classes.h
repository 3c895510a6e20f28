// The definitions of the library's classes, each defined in the class_table.cpp of its folder. The
// definitions are writable because registration rounds the data size and the host writes into the
// definitions.
#pragma once

#include "abi/class_definition.h"

extern REALclassDefinition auPlayerClass;
extern REALclassDefinition coreAudioClass;
extern REALclassDefinition coreAudioListenerClass;
extern REALclassDefinition coreAudioPlayerClass;
extern REALclassDefinition soundStreamClass;

/// Address of the dispatcher function of the sound output component.
extern const AnyFunction soundStreamDispatcher;

/// Entry point under which the sound output component is registered. In a built program it is
/// `soundStreamDispatcher`. In the development environment it is null because a registered component would
/// outlive the program under test.
extern AnyFunction soundComponentEntry;
