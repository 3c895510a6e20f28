// A player object, created as a host creates it.
#pragma once

#include "player/player.h"
#include "plugin/classes.h"
#include "tests/support/class_members.h"
#include "tests/support/fake_host.h"

#include <CoreAudio/CoreAudio.h>

#include <string_view>
#include <vector>

namespace test {

inline const support::ClassMembers members(coreAudioPlayerClass);

using Object = REALobjectStruct*;
using Memory = REALmemoryBlockStruct*;
// The function types of the adding methods.
using AddMono = HostBoolean (*)(Object, Memory, HostInteger, HostInteger, HostInteger, HostBoolean);
using AddStereo = HostBoolean (*)(Object, Memory, Memory, HostInteger, HostInteger, HostInteger, HostBoolean);
using AddFloatMono = HostBoolean (*)(Object, Memory, HostInteger, HostInteger, HostBoolean);
using AddFloatStereo = HostBoolean (*)(Object, Memory, Memory, HostInteger, HostInteger, HostBoolean);

/// A memory block of the fake host.
class Block {
public:
    explicit Block(const std::vector<unsigned char>& bytes)
        : block_(fake::Host::current().newMemoryBlock(
              {reinterpret_cast<const char*>(bytes.data()), bytes.size()}))
    {
    }
    ~Block() { fake::Host::current().drop(block_); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    operator Memory() const { return block_; }

private:
    Memory block_;
};

/// Return the bytes of consecutive values in the processor's byte order.
template <class Value>
std::vector<unsigned char> bytesOf(const std::vector<Value>& values)
{
    const auto* const first = reinterpret_cast<const unsigned char*>(values.data());
    return {first, first + values.size() * sizeof(Value)};
}

/// A constructed player object. The memory is filled with 0xFF before the construction.
class PlayerObject {
public:
    explicit PlayerObject(Word dataOffset = 48);
    ~PlayerObject();
    PlayerObject(const PlayerObject&) = delete;
    PlayerObject& operator=(const PlayerObject&) = delete;

    operator Object() const { return reinterpret_cast<Object>(memory_); }
    player::AudioPlayerData& data() const
    {
        return *reinterpret_cast<player::AudioPlayerData*>(memory_ + offset_);
    }
    player::AudioPlayerData* operator->() const { return &data(); }

    /// Queue floats with the method "AddFloatAudio". Stereo samples must be interleaved.
    bool add(const std::vector<float>& samples, bool clearBuffers = false) const;

    /// Return the samples of a queue slot or of the current buffer. The result is empty if the slot or the
    /// current buffer is empty.
    std::vector<float> slot(int index) const;
    std::vector<float> current() const;

    bool start() const { return members.call<HostBoolean>("Start", *this); }

private:
    Word offset_;
    char* memory_;
};

/// Return the samples of an item.
std::vector<float> samplesOf(const player::PlayItem& item);

/// Return an item with a copy of `samples`, allocated with calloc as the queue expects.
player::PlayItem itemOf(const std::vector<float>& samples);

} // namespace test
