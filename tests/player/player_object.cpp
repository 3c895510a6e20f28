#include "tests/player/player_object.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace test {

namespace {
constexpr std::size_t guardBytes = 64; // guard bytes after the class data
}

PlayerObject::PlayerObject(Word dataOffset) : offset_(dataOffset)
{
    coreAudioPlayerClass.dataOffset = dataOffset;
    const std::size_t size = offset_ + sizeof(player::AudioPlayerData) + guardBytes;
    memory_ = static_cast<char*>(std::malloc(size));
    std::memset(memory_, 0xFF, size);
    members.construct(*this);
}

PlayerObject::~PlayerObject()
{
    coreAudioPlayerClass.dataOffset = offset_;
    // No device runs that would clear the flag, so with the flag set the destructor would wait forever.
    data().isRunning = false;
    members.destruct(*this);
    std::free(memory_);
}

bool PlayerObject::add(const std::vector<float>& samples, bool clearBuffers) const
{
    const Block block(bytesOf(samples));
    return members.call<HostBoolean>("AddFloatAudio", *this, static_cast<Memory>(block), HostInteger{0},
                                     HostInteger{0}, HostBoolean{clearBuffers});
}

std::vector<float> samplesOf(const player::PlayItem& item)
{
    return item.data ? std::vector<float>(item.data, item.data + item.count) : std::vector<float>();
}

player::PlayItem itemOf(const std::vector<float>& samples)
{
    auto* data = static_cast<float*>(std::calloc(std::max<std::size_t>(samples.size(), 1), sizeof(float)));
    std::copy(samples.begin(), samples.end(), data);
    return {static_cast<std::int32_t>(samples.size()), data};
}

std::vector<float> PlayerObject::slot(int index) const { return samplesOf(data().queue[index]); }
std::vector<float> PlayerObject::current() const { return samplesOf(data().current); }

} // namespace test
