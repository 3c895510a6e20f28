// A slice through a unit.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// While this lives and is true, the calling thread is the only one inside a slice of the unit, and the unit
/// stays initialised: whoever uninitialises it waits.
class InSlice {
public:
    explicit InSlice(Unit& unit);
    explicit operator bool() const { return isRendering; }

private:
    RenderScope::Entry entry;
    bool isRendering;
};

/// Pull a slice out of an output: all of AudioUnitRender but finding the unit. Thread [audio].
OSStatus render(Unit& unit, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time, UInt32 bus,
                UInt32 frames, AudioBufferList* list);

/// Give buffers without memory the unit's own, and say what each will hold.
void lendMemory(AudioBufferList& list, pcm::Buffers& own, UInt32 frames);

/// Whether a list has the buffers of a format, each with room for `frames` frames or no memory at all.
bool fits(const AudioBufferList& list, const AudioStreamBasicDescription& format, UInt32 frames);

/// What a bypassed unit renders: its input 0 as it is, pulled straight into the slice. FormatNotSupported
/// where input and output differ in format.
OSStatus passThrough(Unit& unit, Slice& slice);

/// Tell everybody who asked. `moment` is PreRender, or PostRender with or without PostRenderError.
/// Thread [audio & in a slice]
void notify(Unit& unit, AudioUnitRenderActionFlags& flags, AudioUnitRenderActionFlags moment,
            const AudioTimeStamp& time, UInt32 bus, UInt32 frames, AudioBufferList* list);

/// Thread [any].
OSStatus addNotify(Unit& unit, AURenderCallback function, void* context);
OSStatus removeNotify(Unit& unit, AURenderCallback function, void* context);

} // namespace kvxplatform::audiounit
