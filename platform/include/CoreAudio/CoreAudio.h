/* Umbrella header: audio devices, the types of audio data, the host clock. C. */
#ifndef COREAUDIO_COREAUDIO_H
#define COREAUDIO_COREAUDIO_H

#include <CoreAudio/AudioHardware.h>
#include <CoreAudio/CoreAudioTypes.h>
#include <CoreAudio/HostTime.h>

#endif
