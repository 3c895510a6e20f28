// Loading a file: into memory, and a graph built around it.
#pragma once

#include "auplayer/au_player.h"

#include <CoreFoundation/CoreFoundation.h>

namespace auplayer {

/// What one load is asked, and what came of it. On the caller's stack.
struct LoadRequest {
    std::int32_t inputChannels;  ///< of the samples in memory
    std::int32_t outputChannels; ///< between the units
    AUPlayerData* player;
    std::uint8_t isOutOfMemory;
    std::uint8_t result;
    std::uint8_t isThreaded;
    std::uint8_t hasFormats; ///< the load got as far as the texts of the formats, which the caller makes
    CFURLRef url;            ///< the caller's
};

/// Load a file; an object can do that once. `LoadFileMT` loads on another thread and keeps the host alive
/// until it has finished.
/// Shape   channels: of the samples in memory, and between the units; a mixer gets the second.
/// Thread  [main].
/// Returns whether the file is loaded and the graph ready to start. `Lasterror` has the status of the call
///         that failed (a failed read leaves it at 0); what was built stays until the object goes.
/// Errors  a nil file raises "NilObjectException", and so does one that no path leads to; a second load,
///         whatever came of the first, "UnsupportedOperationException", and `File` is then the new one; no
///         memory for the samples "OutOfMemoryException".
HostBoolean LoadFile(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                     HostInteger outputChannels);
HostBoolean LoadFileMT(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                       HostInteger outputChannels);

/// Both. [main]
HostBoolean LoadFileIntern(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                           HostInteger outputChannels, signed char isThreaded);

/// The work itself, on a LoadRequest: reads the file, describes it, builds the graph and makes it ready.
/// Thread  [load]: calls the platform, never the host. Throws nothing.
void LoadFileInternal(const void* request);

/// The samples as a new memory block; nil before a load, after one that failed to read, and for a file of no
/// frames. [main]
REALmemoryBlockStruct* CopyData(REALobjectStruct* object);

} // namespace auplayer
