#include "player/ingestion.h"

#include "player/conversion.h"
#include "player/play_queue.h"
#include "plugin/exceptions.h"
#include "plugin/services.h"
#include "plugin/zeroed.h"

namespace player {

namespace {

/// The one or two blocks of a call: a channel each.
struct Blocks {
    REALmemoryBlockStruct* block[2];
    std::int32_t channels;

    bool isAnyNil() const { return !block[0] || (channels == 2 && !block[1]); }
};

/// Their memory; null where a block has none.
struct Memory {
    const unsigned char* channel[2];
    bool isAnyNull;
};

Memory memoryOf(const Blocks& blocks)
{
    Memory memory = {};
    for (std::int32_t c = 0; c < blocks.channels; ++c) {
        memory.channel[c] = static_cast<const unsigned char*>(REALMemoryBlockGetPtr(blocks.block[c]));
        memory.isAnyNull |= !memory.channel[c];
    }
    return memory;
}

bool refuseNil()
{
    RaiseException("NilObjectException", "Memoryblock is nil");
    return false;
}

/// How samples of one form become floats.
struct Reading {
    Conversion convert;
    std::int32_t bytesPerSample;
};

/// Convert `samples` samples of each channel into a new buffer, interleaved, and queue it. Only here, after
/// every refusal, is the offset applied: until then it may be any number.
bool convertAndQueue(AudioPlayerData& player, const Memory& memory, std::int32_t channels,
                     HostInteger offsetBytes, std::int32_t samples, const Reading& reading, bool clearBuffers)
{
    const std::int64_t total = static_cast<std::int64_t>(samples) * channels;
    auto buffer = allocateZeroed<float>(total);
    if (!buffer) return false;
    const auto count = static_cast<std::size_t>(samples);
    const unsigned char* const first = memory.channel[0] + offsetBytes;
    if (channels == 2)
        convertPairs(reading.convert, static_cast<std::size_t>(reading.bytesPerSample), first,
                     memory.channel[1] + offsetBytes, count, buffer.get());
    else
        reading.convert(first, count, buffer.get());
    PlayItem item = {static_cast<std::int32_t>(total), buffer.release()};
    return AddToPlayList(player, item, clearBuffers);
}

bool addIntegers(AudioPlayerData& player, const Blocks& blocks, HostInteger offsetBytes,
                 HostInteger countBytes, HostInteger bitSize, bool clearBuffers)
{
    if (blocks.isAnyNil()) return refuseNil();
    if (offsetBytes < 0 || countBytes <= 0) return false;
    const Memory memory = memoryOf(blocks);
    if (memory.isAnyNull) return refuseNil();

    const SampleForm* form = findSampleForm(static_cast<std::int32_t>(bitSize));
    if (!form) return false;
    if (!(player.sampleRate >= 1.0f)) return false; // not-a-number too
    if (player.numberOfChannels != 1 && player.numberOfChannels != 2) return false;
    if (!form->conversion) return false;
    return convertAndQueue(player, memory, blocks.channels, offsetBytes,
                           static_cast<std::int32_t>(countBytes / form->bytes),
                           {form->conversion, form->bytes}, clearBuffers);
}

bool addFloats(AudioPlayerData& player, const Blocks& blocks, HostInteger offsetBytes, HostInteger countBytes,
               bool clearBuffers)
{
    if (offsetBytes < 0 || blocks.isAnyNil() || countBytes <= 0) return false;
    const Memory memory = memoryOf(blocks);
    if (memory.isAnyNull) return false;
    return convertAndQueue(player, memory, blocks.channels, offsetBytes,
                           static_cast<std::int32_t>(countBytes / 4), {copyFloats, 4}, clearBuffers);
}

} // namespace

bool AddSomeAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                  HostInteger countBytes, HostInteger bitSize, bool clearBuffers)
{
    return addIntegers(player, {{block, nullptr}, 1}, offsetBytes, countBytes, bitSize, clearBuffers);
}

bool AddSomeAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1, REALmemoryBlockStruct* block2,
                        HostInteger offsetBytes, HostInteger countBytes, HostInteger bitSize,
                        bool clearBuffers)
{
    return addIntegers(player, {{block1, block2}, 2}, offsetBytes, countBytes, bitSize, clearBuffers);
}

bool AddSomeFloatAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                       HostInteger countBytes, bool clearBuffers)
{
    return addFloats(player, {{block, nullptr}, 1}, offsetBytes, countBytes, clearBuffers);
}

bool AddSomeFloatAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1,
                             REALmemoryBlockStruct* block2, HostInteger offsetBytes, HostInteger countBytes,
                             bool clearBuffers)
{
    return addFloats(player, {{block1, block2}, 2}, offsetBytes, countBytes, clearBuffers);
}

} // namespace player
