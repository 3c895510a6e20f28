#include "auplayer/transport.h"

#include "plugin/shared_word.h"
#include "plugin/truncate.h"

#include <initializer_list>

namespace auplayer {

namespace {

double framesPerSecond(const AUPlayerData& player) { return player.endFrame / player.trackLength; }

/// Single precision is what loop points are measured with.
double framesPerSecondOfLoops(const AUPlayerData& player)
{
    return static_cast<double>(static_cast<float>(framesPerSecond(player)));
}

UInt32 frameAt(double frames) { return static_cast<UInt32>(truncateTo64(frames)); }

/// Ask the graph, and keep the status.
bool isRunning(AUPlayerData& player)
{
    Boolean running = false;
    player.lasterror = AUGraphIsRunning(player.graph, &running);
    return player.lasterror == noErr && running;
}

double loopPoint(REALobjectStruct* object, double AUPlayerData::*field)
{
    const AUPlayerData& player = dataOf(object);
    return player.*field > 0 ? player.*field / framesPerSecond(player) : 0.0;
}

} // namespace

void Play(REALobjectStruct* object)
{
    AUPlayerData& player = beginCall(object);
    if (player.graph) setPlaying(object, 0, true);
}

void Pause(REALobjectStruct* object)
{
    AUPlayerData& player = beginCall(object);
    if (player.graph) setPlaying(object, 0, false);
}

void Reset(REALobjectStruct* object)
{
    AUPlayerData& player = beginCall(object);
    for (AudioUnit unit : {player.mixer, player.timePitch, player.varispeed, player.equalizer, player.output})
        if (unit) player.lasterror = AudioUnitReset(unit, kAudioUnitScope_Global, 0);
}

HostBoolean getPlaying(REALobjectStruct* object, HostInteger) { return isRunning(beginCall(object)); }

void setPlaying(REALobjectStruct* object, HostInteger, HostBoolean value)
{
    AUPlayerData& player = beginCall(object);
    const bool running = isRunning(player);
    if (running && value == 0)
        player.lasterror = AUGraphStop(player.graph);
    else if (!running && value == 1)
        player.lasterror = AUGraphStart(player.graph);
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
    storeRelaxed(player.position, frameAt(framesPerSecond(player) * seconds));
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
    if (frames > player.loopOut) storeRelaxed(player.loopOut, frames);
}

void setLoopOut(REALobjectStruct* object, HostInteger, double seconds)
{
    AUPlayerData& player = dataOf(object);
    UInt32 frames = frameAt(framesPerSecondOfLoops(player) * seconds);
    if (player.loopIn > frames) frames = frameAt(player.loopIn);
    storeRelaxed(player.loopOut, static_cast<double>(frames));
}

HostBoolean getLooping(REALobjectStruct* object, HostInteger) { return dataOf(object).isLooping; }

void setLooping(REALobjectStruct* object, HostInteger, HostBoolean value)
{
    AUPlayerData& player = dataOf(object);
    const bool areSet = player.loopIn != unset && player.loopOut != unset;
    storeRelaxed(player.isLooping, HostBoolean{value != 0 && areSet && !(player.loopIn > player.loopOut)});
}

} // namespace auplayer
