#include "auplayer/loading.h"

#include "auplayer/build_graph.h"
#include "auplayer/decode_file.h"
#include "auplayer/file_url.h"
#include "plugin/background.h"
#include "plugin/exception_border.h"
#include "plugin/host_exceptions.h"
#include "plugin/host_string.h"
#include "plugin/memory_block.h"
#include "plugin/services.h"
#include "plugin/shared_word.h"

#include <cstring>

namespace auplayer {

namespace {

REALstringStruct* textOf(const CAStreamBasicDescription& format)
{
    char text[streamTextBytes] = {};
    format.AsString(text, sizeof text);
    return REALBuildUnicodeString(text, static_cast<long long>(std::strlen(text)), encodingUTF8);
}

/// Run the load on the requested thread. The texts of the formats are made afterwards in this function,
/// because the host builds strings only on [main].
void run(LoadRequest& request)
{
    if (request.isThreaded)
        RunThreadedBlocks(&request, LoadFileInternal, nullptr);
    else
        LoadFileInternal(&request);

    if (!request.hasFormats) return;
    request.player->clientFormatString = textOf(*request.player->clientFormat);
    request.player->outputFormatString = textOf(*request.player->outputFormat);
}

} // namespace

HostBoolean LoadFileIntern(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                           HostInteger outputChannels, signed char isThreaded)
{
    if (!file) {
        RaiseException("NilObjectException", "file is nil");
        return false;
    }
    AUPlayerData& player = beginCall(object);
    // The lock comes before the store: if locking throws, the record holds no reference that must be
    // released.
    REALLockObject(asObject(file));
    // A refused second load intentionally replaces `file`, too, and leaks the reference to the first item.
    player.file = file;
    if (player.isFileLoaded) {
        RaiseException("UnsupportedOperationException", "This class can only load one file.");
        return false;
    }
    player.isFileLoaded = true;

    const OwnedCF<CFURLRef> url = urlOf(file);
    if (!url) {
        RaiseException("NilObjectException", "File is invalid path");
        return false;
    }
    LoadRequest request = {static_cast<std::int32_t>(inputChannels),
                           static_cast<std::int32_t>(outputChannels),
                           &player,
                           false,
                           false,
                           static_cast<std::uint8_t>(isThreaded != 0),
                           false,
                           url.get()};
    run(request);
    if (request.isOutOfMemory)
        RaiseException("OutOfMemoryException", "Failed to allocate buffer for audio data.");
    return request.result;
}

void LoadFileInternal(const void* work)
{
    LoadRequest& request = *static_cast<LoadRequest*>(const_cast<void*>(work));
    const AUPlayerData& player = *request.player;
    if (!player.loadedAudio || !player.clientFormat || !player.outputFormat) {
        request.isOutOfMemory = true; // the constructor could not allocate these parts
        return;
    }
    request.result = catchAll([&request] { return decodeFile(request) && buildGraph(*request.player); });
}

HostBoolean LoadFile(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                     HostInteger outputChannels)
{
    return LoadFileIntern(object, file, inputChannels, outputChannels, false);
}

HostBoolean LoadFileMT(REALobjectStruct* object, REALfolderItemStruct* file, HostInteger inputChannels,
                       HostInteger outputChannels)
{
    return LoadFileIntern(object, file, inputChannels, outputChannels, true);
}

REALmemoryBlockStruct* CopyData(REALobjectStruct* object)
{
    const LoadedAudio* const audio = dataOf(object).loadedAudio;
    const float* const samples = audio ? loadAcquired(audio->samples) : nullptr;
    return samples ? REALBuildMemoryblock(samples, audio->byteSize) : nullptr;
}

} // namespace auplayer
