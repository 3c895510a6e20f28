// Rendering of one slice through a unit. A slice is the frames of one render call.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// Begin a slice. The caller has entered the unit's render scope.
/// Returns  false if the unit is not initialised. After true, the unit stays initialised until the caller
///          leaves the scope, because uninitialize() clears isInitialized and then waits for the scope.
/// [audio & rendering]
bool beginSlice(Unit& unit);

/// Render a slice of an output. This is AudioUnitRender once its handle has been resolved to a unit.
/// [audio]
OSStatus render(Unit& unit, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time, UInt32 bus,
                UInt32 frames, AudioBufferList* list);

/// Point the buffers of `list` that have no memory at the unit's own memory, and set the byte size of all
/// buffers.
/// [any]
void fillInMemory(AudioBufferList& list, pcm::Buffers& own, UInt32 frames);

/// Whether a buffer list has the buffer and channel counts that a format requires, and each buffer either has
/// no memory or can hold `frames` frames.
/// [any]
bool fits(const AudioBufferList& list, const AudioStreamBasicDescription& format, UInt32 frames);

} // namespace kvxplatform::audiounit
