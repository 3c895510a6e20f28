/* Devices, streams, their properties and procedures; the records of sound; the host clock. */
#ifndef COREAUDIO_COREAUDIO_H
#define COREAUDIO_COREAUDIO_H

#include <CoreAudio/AudioHardware.h>
#include <CoreAudio/CoreAudioTypes.h>
#include <CoreAudio/HostTime.h>

#endif
