// The methods that load a file, and `Data`.
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// Load a file into memory and build the graph; an object loads once. LoadFileMT loads on a background thread
/// and keeps the host running until the load has finished.
/// Shape   inputChannels of the samples in memory; outputChannels between the units, from the mixer on.
/// Returns whether the file is loaded and the graph can be started. After a refusal `Lasterror` has the
///         platform's status (0 for a failed read); the parts made before stay until the object is destroyed.
/// Errors  "NilObjectException" for a nil file, or one without a path; "OutOfMemoryException" without memory
///         for the samples; "UnsupportedOperationException" for a second load, which still replaces `File`.
/// [main]
HostBoolean LoadFile(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                     HostInteger outputChannels);
HostBoolean LoadFileMT(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                       HostInteger outputChannels);

/// The implementation of both.
/// [main]
HostBoolean LoadFileIntern(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                           HostInteger outputChannels, signed char isThreaded);

/// Run the load of a LoadRequest. Calls the platform, never the host; throws nothing.
/// [main | worker]
void LoadFileInternal(const void* request);

/// Return a new memory block with the samples; nil before a load, after a failed read, or without frames.
/// [main]
REALmemoryBlockStruct* CopyData(REALobjectStruct* object);

} // namespace auplayer
