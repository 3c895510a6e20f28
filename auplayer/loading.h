// The methods that load a file, and the method `Data`, which copies the samples.
#pragma once

#include "auplayer/au_player.h"

namespace auplayer {

/// Load a file into memory and build the graph. An object can load only one file. LoadFileMT loads on a
/// background thread while [main] yields to the host, and returns after the load has finished.
/// Shape   inputChannels is the number of channels of the samples in memory; outputChannels is the number of
///         channels between the units.
/// Returns whether the file is loaded and the graph can be started. After a failed platform call `Lasterror`
///         is the status of that call, or 0 if reading the samples failed. Everything made before the failure
///         stays in the record until the object is destroyed.
/// Errors  "NilObjectException" for a nil file or a file without a path; "OutOfMemoryException" if there is
///         no memory for the samples; "UnsupportedOperationException" for a second load, which still replaces
///         `File`.
/// [main]
HostBoolean LoadFile(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                     HostInteger outputChannels);
HostBoolean LoadFileMT(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                       HostInteger outputChannels);

/// The common implementation of LoadFile and LoadFileMT.
/// [main]
HostBoolean LoadFileIntern(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                           HostInteger outputChannels, signed char isThreaded);

/// Run the load that `request`, a LoadRequest, describes. Calls the platform, but never the host. Throws
/// nothing.
/// [main], [worker]
void LoadFileInternal(const void* request);

/// Return a new memory block with a copy of the samples. Return nil before a load, after a failed read, and
/// for a file without frames.
/// [main]
REALmemoryBlockStruct* CopyData(REALobjectStruct* object);

} // namespace auplayer
