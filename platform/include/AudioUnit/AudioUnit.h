/* Umbrella header: audio units, their properties and parameters. C. */
#ifndef AUDIOUNIT_AUDIOUNIT_H
#define AUDIOUNIT_AUDIOUNIT_H

#include <AudioUnit/AUComponent.h>
#include <AudioUnit/AudioComponent.h>
#include <AudioUnit/AudioOutputUnit.h>
#include <AudioUnit/AudioUnitParameters.h>
#include <AudioUnit/AudioUnitProperties.h>

#endif
