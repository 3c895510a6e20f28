// What the component does for its client: one function for each selector.
//
// `globals` is the instance's storage, in use by the caller: null before Open, after Close, and after an Open
// without memory. Results are the platform's statuses. A client may call from several threads at a time, and
// from a completion routine on the render thread.
//
// All functions: [client].
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

ComponentResult Version(QTSoundStreamGlobals* globals);

/// Create the instance's storage, replacing a former one. The instance opened last is the audible one.
/// Errors  memFullErr: the instance has no storage.
ComponentResult Open(QTSoundStreamGlobals* globals, ComponentInstance self);

/// Close the mixer and free the storage. The registration is silent until another instance is opened. Waits
/// for the render call in progress; inside that call the mixer is closed when the call ends, and the rest of
/// its samples is silence.
ComponentResult Close(QTSoundStreamGlobals* globals, ComponentInstance self);

/// Open the mixer; a former one is closed first, after the render call in progress or at once inside it.
/// Errors  channelBusy: another thread initialises the same instance. paramErr: the instance has no storage.
ComponentResult InitOutputDevice(QTSoundStreamGlobals* globals, long actions);

/// All four forward to the mixer, and then set whether the stream is active.
ComponentResult StartSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult StopSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult PauseSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult PlaySourceBuffer(QTSoundStreamGlobals* globals, SoundSource source, SoundParamBlockPtr block,
                                 long actions);

} // namespace soundstream
