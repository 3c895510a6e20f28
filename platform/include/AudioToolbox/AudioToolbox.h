/* Umbrella header: graphs of audio units, sound files, converters. C. */
#ifndef AUDIOTOOLBOX_AUDIOTOOLBOX_H
#define AUDIOTOOLBOX_AUDIOTOOLBOX_H

#include <AudioToolbox/AUGraph.h>
#include <AudioToolbox/AudioConverter.h>
#include <AudioToolbox/AudioFile.h>
#include <AudioToolbox/ExtendedAudioFile.h>

#endif
