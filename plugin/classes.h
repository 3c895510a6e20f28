// The library's classes, each defined in the class_table.cpp of its own folder. Static, writable data:
// registration rounds the data size, and the host writes into them.
#pragma once

#include "abi/class_definition.h"

extern REALclassDefinition auPlayerClass;
extern REALclassDefinition coreAudioClass;
extern REALclassDefinition coreAudioListenerClass;
extern REALclassDefinition coreAudioPlayerClass;
extern REALclassDefinition soundStreamClass;

/// The sound output component's dispatcher, as an address; the component's registration knows its type.
extern const AnyFunction soundStreamDispatcher;

/// What the component is registered with: the dispatcher in a built program, null in the development
/// environment, where no component may outlive a program under test.
extern AnyFunction soundComponentEntry;
