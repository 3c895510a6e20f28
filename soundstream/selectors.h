// What the component does for its client, a function for each selector. Thread: [client], also several at a
// time, and the render thread in a completion routine.
//
// `globals` are the instance's storage, held by the caller; null before Open, after Close and for a component
// without memory. Results are the platform's statuses.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

ComponentResult Version(QTSoundStreamGlobals* globals);

/// Make the instance's storage, in place of one from before, and let the render thread find it. The latest
/// instance is the one that is heard.
/// Errors  memFullErr: the instance stays without storage.
ComponentResult Open(QTSoundStreamGlobals* globals, ComponentInstance self);

/// Give up the mixer and the storage. Samples of the mixer that are on their way are heard no more; nor is
/// another instance that was heard, until one is opened. Waits for the slice that plays it; but not in a
/// completion routine of what another state plays: that slice then ends as it began, and the mixer closes
/// behind it.
ComponentResult Close(QTSoundStreamGlobals* globals, ComponentInstance self);

/// Open the mixer, in place of one from before.
/// Errors  channelBusy: another thread does already, or one plays it while this one is in a completion
///         routine of what another state plays.
ComponentResult InitOutputDevice(QTSoundStreamGlobals* globals, long actions);

/// All four pass on to the mixer, and note whether the stream is active.
ComponentResult StartSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult StopSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult PauseSource(QTSoundStreamGlobals* globals, short count, SoundSource* sources);
ComponentResult PlaySourceBuffer(QTSoundStreamGlobals* globals, SoundSource source, SoundParamBlockPtr block,
                                 long actions);

} // namespace soundstream
