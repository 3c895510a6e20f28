#include "auplayer/channel_map.h"

#include "plugin/exception_border.h"
#include "plugin/host_exceptions.h"
#include "plugin/zeroed.h"

#include <algorithm>

namespace auplayer {

namespace {

constexpr HostInteger integerElements = 0; // host's type code for an array of Integer
constexpr SInt32 unmapped = -1;

/// A copy of the output unit's channel map.
struct Map {
    UInt32 size = 0; ///< size of the map in bytes; an incomplete last entry is ignored
    Zeroed<char> bytes;

    SInt32* entries() const { return reinterpret_cast<SInt32*>(bytes.get()); }
    UInt32 count() const { return size / sizeof(SInt32); }
};

/// Read the output unit's channel map. Returns false for an empty map and on any failure.
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

} // namespace

ArrayOf<HostInteger>* ChannelMap(REALobjectStruct* object)
{
    Map map;
    if (!readMap(beginCall(object), map)) return nullptr;
    REALarrayStruct* const array = REALCreateArray(integerElements, -1);
    if (!array) return nullptr;
    // The host exports no function that releases an array, so after an exception the host gets an incomplete
    // array.
    catchAll([&] { append(map, array); });
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
        HostInteger value = 0; // value used if the host program removes the element during this call
        readArrayElement(values, static_cast<HostInteger>(i), value);
        map.entries()[i] = static_cast<SInt32>(value);
    }
    keepStatus(player, AudioUnitSetProperty(loadAcquired(player.output), kAudioOutputUnitProperty_ChannelMap,
                                            kAudioUnitScope_Output, 0, map.bytes.get(), map.size));
}

} // namespace auplayer
