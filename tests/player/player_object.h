// A player object as a host makes one, and the members of its class, found by name in the class table.
#pragma once

#include "player/player.h"
#include "plugin/classes.h"
#include "tests/player/small_host.h"

#include <CoreAudio/CoreAudio.h>

#include <string_view>
#include <vector>

namespace test {

/// The row of that name.
const REALproperty& propertyRow(std::string_view name);

/// The row whose declaration begins with that name.
const REALmethod& methodRow(std::string_view name);

using Object = REALobjectStruct*;

template <class T>
T get(Object object, std::string_view property)
{
    const REALproperty& row = propertyRow(property);
    return reinterpret_cast<T (*)(Object, HostInteger)>(row.getter)(object, row.parameter);
}

template <class T>
void set(Object object, std::string_view property, T value)
{
    const REALproperty& row = propertyRow(property);
    reinterpret_cast<void (*)(Object, HostInteger, T)>(row.setter)(object, row.parameter, value);
}

using Memory = REALmemoryBlockStruct*;
// The forms that the class's methods have.
using AddMono = HostBoolean (*)(Object, Memory, HostInteger, HostInteger, HostInteger, HostBoolean);
using AddStereo = HostBoolean (*)(Object, Memory, Memory, HostInteger, HostInteger, HostInteger, HostBoolean);
using AddFloatMono = HostBoolean (*)(Object, Memory, HostInteger, HostInteger, HostBoolean);
using AddFloatStereo = HostBoolean (*)(Object, Memory, Memory, HostInteger, HostInteger, HostBoolean);

/// Call a method by name: call<HostBoolean>("Start", object).
template <class Result, class... Arguments>
Result call(std::string_view name, Object object, Arguments... arguments)
{
    return reinterpret_cast<Result (*)(Object, Arguments...)>(methodRow(name).function)(object, arguments...);
}

/// An object in memory that held rubbish before, constructed and, at the end, destroyed.
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

    /// Queue floats through "AddFloatAudio"; for stereo data they are interleaved.
    bool add(const std::vector<float>& samples, bool clearBuffers = false) const;

    /// What waits in a slot, and what plays; empty for none.
    std::vector<float> slot(int index) const;
    std::vector<float> current() const;

    bool start() const { return call<HostBoolean>("Start", *this); }

private:
    Word offset_;
    char* memory_;
};

/// The samples of an item.
std::vector<float> samplesOf(const player::PlayItem& item);

/// An item with samples of its own, as the queue takes them.
player::PlayItem itemOf(const std::vector<float>& samples);

} // namespace test
