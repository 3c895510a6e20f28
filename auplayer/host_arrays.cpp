#include "auplayer/host_arrays.h"

#include "plugin/exceptions.h"
#include "plugin/zeroed.h"

#include <algorithm>

namespace auplayer {

namespace {

constexpr HostInteger integerElements = 0; // what the host calls an array of Integer
constexpr SInt32 unmapped = -1;

/// The output unit's map as the unit has it.
struct Map {
    UInt32 size = 0; ///< bytes; entries are whole words of it
    Zeroed<char> bytes;

    SInt32* entries() const { return reinterpret_cast<SInt32*>(bytes.get()); }
    UInt32 count() const { return size / sizeof(SInt32); }
};

/// Read it. An empty one, or none, is false; so is everything that goes wrong.
bool readMap(AUPlayerData& player, Map& map)
{
    const bool isKnown = keepStatus(
        player, AudioUnitGetPropertyInfo(loadAcquired(player.output), kAudioOutputUnitProperty_ChannelMap,
                                         kAudioUnitScope_Output, 0, &map.size, nullptr));
    if (!isKnown || map.size == 0) return false;

    keepStatus(player, -1);
    map.bytes = allocateZeroed<char>(map.size);
    if (!map.bytes) {
        RaiseException("OutOfMemoryException", "Failed to allocate buffer for channel map.");
        return false;
    }
    UInt32 size = map.size;
    return keepStatus(player,
                      AudioUnitGetProperty(loadAcquired(player.output), kAudioOutputUnitProperty_ChannelMap,
                                           kAudioUnitScope_Output, 0, map.bytes.get(), &size));
}

void append(const Map& map, REALarrayStruct* array)
{
    const InsertInteger insert = REALInsertArrayValueInteger(array);
    if (!insert) return;
    for (UInt32 i = 0; i < map.count(); ++i) insert(array, REALGetArrayUBound(array) + 1, map.entries()[i]);
}

template <class Element>
void updateEQ(REALobjectStruct* object, ArrayOf<Element>* eqBands)
{
    if (!eqBands) {
        RaiseException("NilObjectException", "eqBands is nil!");
        return;
    }
    const AudioUnit equalizer = loadAcquired(dataOf(object).equalizer);
    if (!equalizer) return;
    const std::int64_t count = arrayCount(eqBands);
    for (std::int64_t i = 0; i < count; ++i) {
        Element gain = 0;
        readArrayElement(eqBands, static_cast<HostInteger>(i), gain);
        AudioUnitSetParameter(equalizer, static_cast<AudioUnitParameterID>(i), kAudioUnitScope_Global, 0,
                              static_cast<AudioUnitParameterValue>(gain), 0);
    }
}

} // namespace

ArrayOf<HostInteger>* ChannelMap(REALobjectStruct* object)
{
    Map map;
    if (!readMap(beginCall(object), map)) return nullptr;
    REALarrayStruct* const array = REALCreateArray(integerElements, -1);
    if (!array) return nullptr;
    try {
        append(map, array);
    } catch (...) {
        // No service takes an array back: the host gets it as far as it came.
    }
    return static_cast<ArrayOf<HostInteger>*>(array);
}

void setChannelMap(REALobjectStruct* object, ArrayOf<HostInteger>* values)
{
    AUPlayerData& player = beginCall(object);
    Map map;
    if (!readMap(player, map)) return;
    std::fill_n(map.entries(), map.count(), unmapped);

    const std::int64_t given = values ? arrayCount(values) : 0;
    for (UInt32 i = 0; i < std::min<std::int64_t>(given, map.count()); ++i) {
        HostInteger value = 0; // stays for an element that the host has no more
        readArrayElement(values, static_cast<HostInteger>(i), value);
        map.entries()[i] = static_cast<SInt32>(value);
    }
    keepStatus(player, AudioUnitSetProperty(loadAcquired(player.output), kAudioOutputUnitProperty_ChannelMap,
                                            kAudioUnitScope_Output, 0, map.bytes.get(), map.size));
}

void updateEQDouble(REALobjectStruct* object, ArrayOf<double>* eqBands) { updateEQ(object, eqBands); }
void updateEQSingle(REALobjectStruct* object, ArrayOf<float>* eqBands) { updateEQ(object, eqBands); }

} // namespace auplayer
