// The component's requests: one function for each selector that a client can send.
//
// `globals` is the instance's storage, and the caller counts as one of its users. It is null before Open,
// after Close, and after an Open that found no memory. Results are the platform's statuses. A client may call
// from several threads at the same time, and from a completion routine on the render thread.
//
// All functions: [client].
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

ComponentResult Version(QTSoundStreamGlobals* globals);

/// Create the instance's storage and close the former storage, if any. The instance opened last is the
/// audible one.
/// Errors  memFullErr: the instance has no storage.
ComponentResult Open(QTSoundStreamGlobals* globals, ComponentInstance self);

/// Close the mixer and free the storage. The component stays silent until another instance is opened. Waits
/// for the render call in progress; if the caller is inside that call, the mixer is closed when the call
/// ends, and the rest of the call renders silence.
ComponentResult Close(QTSoundStreamGlobals* globals, ComponentInstance self);

/// Open the mixer. A former mixer is closed first: after the render call in progress, or at once if the
/// caller is inside that call.
/// Errors  channelBusy: another thread initialises the same instance. paramErr: the instance has no storage.
ComponentResult InitOutputDevice(QTSoundStreamGlobals* globals, long actions);

/// These four functions forward to the mixer, and then set whether the stream is active.
ComponentResult StartSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult StopSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult PauseSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult PlaySourceBuffer(QTSoundStreamGlobals* globals, SoundSource source, SoundParamBlockPtr block,
                                 long actions);

} // namespace soundstream
