#include "auplayer/transport.h"

#include "plugin/shared_word.h"
#include "plugin/truncate.h"

#include <initializer_list>

namespace auplayer {

namespace {

/// Return whether the graph is running. The status of the query is stored in `Lasterror`.
bool isRunning(AUPlayerData& player)
{
    Boolean running = false;
    return keepStatus(player, AUGraphIsRunning(loadAcquired(player.graph), &running)) && running;
}

} // namespace

void Play(REALobjectStruct* object)
{
    AUPlayerData& player = beginCall(object);
    if (loadAcquired(player.graph)) setPlaying(object, 0, true);
}

void Pause(REALobjectStruct* object)
{
    AUPlayerData& player = beginCall(object);
    if (loadAcquired(player.graph)) setPlaying(object, 0, false);
}

void Reset(REALobjectStruct* object)
{
    AUPlayerData& player = beginCall(object);
    static constexpr AudioUnit AUPlayerData::*const units[] = {
        &AUPlayerData::mixer, &AUPlayerData::timePitch, &AUPlayerData::varispeed, &AUPlayerData::equalizer,
        &AUPlayerData::output};
    for (const auto field : units)
        if (const AudioUnit unit = loadAcquired(player.*field))
            keepStatus(player, AudioUnitReset(unit, kAudioUnitScope_Global, 0));
}

HostBoolean getPlaying(REALobjectStruct* object, HostInteger) { return isRunning(beginCall(object)); }

void setPlaying(REALobjectStruct* object, HostInteger, HostBoolean value)
{
    AUPlayerData& player = beginCall(object);
    const bool running = isRunning(player);
    if (running && value == 0)
        keepStatus(player, AUGraphStop(loadAcquired(player.graph)));
    else if (!running && value == 1) // any other value starts nothing; host programs may rely on it
        keepStatus(player, AUGraphStart(loadAcquired(player.graph)));
}

double getCurrentTime(REALobjectStruct* object, HostInteger)
{
    const AUPlayerData& player = dataOf(object);
    const UInt32 position = loadRelaxed(player.position);
    return position == 0 ? 0.0 : position / framesPerSecond(player);
}

void setCurrentTime(REALobjectStruct* object, HostInteger, double seconds)
{
    AUPlayerData& player = dataOf(object);
    storeRelaxed(player.position, UInt32{frameAt(framesPerSecond(player) * seconds)});
}

double getTrackLength(REALobjectStruct* object, HostInteger)
{
    return loadRelaxed(dataOf(object).trackLength);
}

double getSampleRate(REALobjectStruct* object, HostInteger)
{
    return loadRelaxed(beginCall(object).sampleRate);
}

} // namespace auplayer
