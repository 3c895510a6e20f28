#include "auplayer/transport.h"

#include "plugin/shared_word.h"
#include "plugin/truncate.h"

#include <initializer_list>

namespace auplayer {

namespace {

double framesPerSecond(const AUPlayerData& player)
{
    return loadRelaxed(player.endFrame) / loadRelaxed(player.trackLength);
}

/// Single precision is what loop points are measured with.
double framesPerSecondOfLoops(const AUPlayerData& player)
{
    return static_cast<double>(static_cast<float>(framesPerSecond(player)));
}

/// Ask the graph, and keep the status.
bool isRunning(AUPlayerData& player)
{
    Boolean running = false;
    return keepStatus(player, AUGraphIsRunning(loadAcquired(player.graph), &running)) && running;
}

double loopPoint(REALobjectStruct* object, double AUPlayerData::*field)
{
    const AUPlayerData& player = dataOf(object);
    const double frames = loadRelaxed(player.*field);
    return frames > 0 ? frames / framesPerSecond(player) : 0.0;
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
    else if (!running && value == 1)
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

double getLoopIn(REALobjectStruct* object, HostInteger) { return loopPoint(object, &AUPlayerData::loopIn); }

double getLoopOut(REALobjectStruct* object, HostInteger) { return loopPoint(object, &AUPlayerData::loopOut); }

void setLoopIn(REALobjectStruct* object, HostInteger, double seconds)
{
    AUPlayerData& player = dataOf(object);
    const double frames = frameAt(framesPerSecondOfLoops(player) * seconds);
    storeRelaxed(player.loopIn, frames);
    if (frames > loadRelaxed(player.loopOut)) storeRelaxed(player.loopOut, frames);
}

void setLoopOut(REALobjectStruct* object, HostInteger, double seconds)
{
    AUPlayerData& player = dataOf(object);
    UInt32 frames = frameAt(framesPerSecondOfLoops(player) * seconds);
    const double in = loadRelaxed(player.loopIn);
    if (in > frames) frames = frameAt(in);
    storeRelaxed(player.loopOut, static_cast<double>(frames));
}

HostBoolean getLooping(REALobjectStruct* object, HostInteger)
{
    return loadRelaxed(dataOf(object).isLooping);
}

void setLooping(REALobjectStruct* object, HostInteger, HostBoolean value)
{
    AUPlayerData& player = dataOf(object);
    const double in = loadRelaxed(player.loopIn), out = loadRelaxed(player.loopOut);
    const bool areSet = in != unset && out != unset;
    storeRelaxed(player.isLooping, HostBoolean{value != 0 && areSet && !(in > out)});
}

} // namespace auplayer
