/* Graphs of audio units, sound files, and conversion between formats. */
#ifndef AUDIOTOOLBOX_AUDIOTOOLBOX_H
#define AUDIOTOOLBOX_AUDIOTOOLBOX_H

#include <AudioToolbox/AUGraph.h>
#include <AudioToolbox/AudioConverter.h>
#include <AudioToolbox/AudioFile.h>
#include <AudioToolbox/ExtendedAudioFile.h>

#endif
