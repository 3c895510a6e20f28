// The library's classes. Each is defined in the class_table.cpp of its folder. The definitions are writable:
// registration rounds the data size, and the host writes into them.
#pragma once

#include "abi/class_definition.h"

extern REALclassDefinition auPlayerClass;
extern REALclassDefinition coreAudioClass;
extern REALclassDefinition coreAudioListenerClass;
extern REALclassDefinition coreAudioPlayerClass;
extern REALclassDefinition soundStreamClass;

/// The address of the sound output component's dispatcher.
extern const AnyFunction soundStreamDispatcher;

/// The entry point that the sound output component is registered with: the dispatcher in a built program.
/// Null in the development environment, where a component would outlive the program under test.
extern AnyFunction soundComponentEntry;
