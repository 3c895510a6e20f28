#include "tests/player/player_object.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace test {

namespace {
constexpr std::size_t guardBytes = 64; // guard bytes after the class data
}

const REALproperty& propertyRow(std::string_view name)
{
    const auto* rows = static_cast<const REALproperty*>(coreAudioPlayerClass.properties);
    for (Word i = 0; i < coreAudioPlayerClass.propertyCount; ++i)
        if (rows[i].name == name) return rows[i];
    std::fprintf(stderr, "the class has no such property\n");
    std::abort();
}

const REALmethod& methodRow(std::string_view name)
{
    const auto* rows = static_cast<const REALmethod*>(coreAudioPlayerClass.methods);
    for (Word i = 0; i < coreAudioPlayerClass.methodCount; ++i) {
        const std::string_view declaration = rows[i].declaration;
        if (declaration.substr(0, declaration.find_first_of("( ")) == name) return rows[i];
    }
    std::fprintf(stderr, "the class has no such method\n");
    std::abort();
}

PlayerObject::PlayerObject(Word dataOffset) : offset_(dataOffset)
{
    coreAudioPlayerClass.dataOffset = dataOffset;
    const std::size_t size = offset_ + sizeof(player::AudioPlayerData) + guardBytes;
    memory_ = static_cast<char*>(std::malloc(size));
    std::memset(memory_, 0xFF, size);
    reinterpret_cast<void (*)(Object)>(coreAudioPlayerClass.constructor)(*this);
}

PlayerObject::~PlayerObject()
{
    coreAudioPlayerClass.dataOffset = offset_;
    // No device runs that would clear the flag, so with the flag set the destructor would wait forever.
    data().isRunning = false;
    reinterpret_cast<void (*)(Object)>(coreAudioPlayerClass.destructor)(*this);
    std::free(memory_);
}

bool PlayerObject::add(const std::vector<float>& samples, bool clearBuffers) const
{
    const host::Block block(host::bytesOf(samples));
    return call<HostBoolean>("AddFloatAudio", *this, static_cast<Memory>(block), HostInteger{0},
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
