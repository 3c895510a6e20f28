#include "player/ingestion.h"

#include "player/integer_to_float.h"
#include "player/play_queue.h"
#include "plugin/host_exceptions.h"
#include "plugin/services.h"
#include "plugin/zeroed.h"

namespace player {

namespace {

/// One value per channel. With one channel the second value is unused.
template <class T>
struct Channels {
    T channel[2];
    std::int32_t count;

    bool isAnyNull() const { return !channel[0] || (count == 2 && !channel[1]); }
};
using Blocks = Channels<REALmemoryBlockStruct*>;
using Memory = Channels<const unsigned char*>;

Memory memoryOf(const Blocks& blocks)
{
    Memory memory = {{}, blocks.count};
    for (std::int32_t c = 0; c < blocks.count; ++c)
        memory.channel[c] = static_cast<const unsigned char*>(REALMemoryBlockGetPtr(blocks.channel[c]));
    return memory;
}

bool refuseNil()
{
    RaiseException("NilObjectException", "Memoryblock is nil");
    return false;
}

/// Convert the samples of all channels into a new interleaved buffer and queue the buffer. The offset is
/// added to the addresses only here, after all checks, because a refused call may have an offset out of
/// range.
bool convertAndQueue(AudioPlayerData& player, const Memory& memory, HostInteger offsetBytes,
                     HostInteger countBytes, const SampleForm& form, bool clearBuffers)
{
    const auto count = static_cast<std::size_t>(countBytes / form.bytes);
    const std::int64_t total = static_cast<std::int64_t>(count) * memory.count;
    Zeroed<float> buffer = allocateZeroed<float>(total);
    if (!buffer) return false;
    const unsigned char* const first = memory.channel[0] + offsetBytes;
    if (memory.count == 2)
        convertPairs(form.conversion, static_cast<std::size_t>(form.bytes), first,
                     memory.channel[1] + offsetBytes, count, buffer.get());
    else
        form.conversion(first, count, buffer.get());
    PlayItem item = {static_cast<std::int32_t>(total), buffer.release()};
    return AddToPlayList(player, item, clearBuffers);
}

bool addIntegers(AudioPlayerData& player, const Blocks& blocks, HostInteger offsetBytes,
                 HostInteger countBytes, HostInteger bitSize, bool clearBuffers)
{
    if (blocks.isAnyNull()) return refuseNil();
    if (offsetBytes < 0 || countBytes <= 0) return false;
    const Memory memory = memoryOf(blocks);
    if (memory.isAnyNull()) return refuseNil();

    const SampleForm* const form = findSampleForm(static_cast<std::int32_t>(bitSize));
    if (!form || !form->conversion) return false;
    // This form of the comparison also refuses a rate of not-a-number.
    if (!(player.sampleRate >= 1.0f)) return false;
    if (player.numberOfChannels != 1 && player.numberOfChannels != 2) return false;
    return convertAndQueue(player, memory, offsetBytes, countBytes, *form, clearBuffers);
}

bool addFloats(AudioPlayerData& player, const Blocks& blocks, HostInteger offsetBytes, HostInteger countBytes,
               bool clearBuffers)
{
    if (offsetBytes < 0 || blocks.isAnyNull() || countBytes <= 0) return false;
    const Memory memory = memoryOf(blocks);
    if (memory.isAnyNull()) return false;
    constexpr SampleForm floats = {32, sizeof(float), copyFloats};
    return convertAndQueue(player, memory, offsetBytes, countBytes, floats, clearBuffers);
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
