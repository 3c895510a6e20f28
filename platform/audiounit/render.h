// One slice through a unit.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// Begin a slice, after entering the unit's scope. False: the unit is not initialised. A true result holds
/// until the scope is left: uninitialising clears isInitialized, then waits for the scope.
/// [audio & rendering]
bool beginSlice(Unit& unit);

/// Render a slice of an output: AudioUnitRender without the handle.
/// [audio]
OSStatus render(Unit& unit, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time, UInt32 bus,
                UInt32 frames, AudioBufferList* list);

/// Point buffers without memory at the unit's own, and set the byte size of all.
/// [any]
void fillInMemory(AudioBufferList& list, pcm::Buffers& own, UInt32 frames);

/// Whether a list has the buffers of a format, each without memory or with a capacity of `frames` frames.
/// [any]
bool fits(const AudioBufferList& list, const AudioStreamBasicDescription& format, UInt32 frames);

} // namespace kvxplatform::audiounit
