// A player object, created as a host creates it. Properties and methods are found by name in the class table.
#pragma once

#include "player/player.h"
#include "plugin/classes.h"
#include "tests/player/small_host.h"

#include <CoreAudio/CoreAudio.h>

#include <string_view>
#include <vector>

namespace test {

/// Return the property named `name`. The program ends if there is no such property.
const REALproperty& propertyRow(std::string_view name);

/// Return the method whose declaration begins with `name`. The program ends if there is no such method.
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
// The function types of the adding methods.
using AddMono = HostBoolean (*)(Object, Memory, HostInteger, HostInteger, HostInteger, HostBoolean);
using AddStereo = HostBoolean (*)(Object, Memory, Memory, HostInteger, HostInteger, HostInteger, HostBoolean);
using AddFloatMono = HostBoolean (*)(Object, Memory, HostInteger, HostInteger, HostBoolean);
using AddFloatStereo = HostBoolean (*)(Object, Memory, Memory, HostInteger, HostInteger, HostBoolean);

/// Call a method by its name, for example call<HostBoolean>("Start", object).
template <class Result, class... Arguments>
Result call(std::string_view name, Object object, Arguments... arguments)
{
    return reinterpret_cast<Result (*)(Object, Arguments...)>(methodRow(name).function)(object, arguments...);
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

    bool start() const { return call<HostBoolean>("Start", *this); }

private:
    Word offset_;
    char* memory_;
};

/// Return the samples of an item.
std::vector<float> samplesOf(const player::PlayItem& item);

/// Return an item with a copy of `samples`, allocated with calloc as the queue expects.
player::PlayItem itemOf(const std::vector<float>& samples);

} // namespace test
