/* Audio units: finding, opening, setting up and pulling sound out of them. */
#ifndef AUDIOUNIT_AUDIOUNIT_H
#define AUDIOUNIT_AUDIOUNIT_H

#include <AudioUnit/AUComponent.h>
#include <AudioUnit/AudioComponent.h>
#include <AudioUnit/AudioOutputUnit.h>
#include <AudioUnit/AudioUnitParameters.h>
#include <AudioUnit/AudioUnitProperties.h>

#endif
