#include "auplayer/loop.h"

#include "plugin/truncate.h"

namespace auplayer {

namespace {

/// Return the frame at a time. The frames per second are intentionally rounded to single precision.
UInt32 loopFrameAt(const AUPlayerData& player, double seconds)
{
    return frameAt(static_cast<double>(static_cast<float>(framesPerSecond(player))) * seconds);
}

double loopPoint(REALobjectStruct* object, double AUPlayerData::*field)
{
    const AUPlayerData& player = dataOf(object);
    const double frames = loadRelaxed(player.*field);
    return frames > 0 ? frames / framesPerSecond(player) : 0.0;
}

} // namespace

double getLoopIn(REALobjectStruct* object, HostInteger) { return loopPoint(object, &AUPlayerData::loopIn); }

double getLoopOut(REALobjectStruct* object, HostInteger) { return loopPoint(object, &AUPlayerData::loopOut); }

void setLoopIn(REALobjectStruct* object, HostInteger, double seconds)
{
    AUPlayerData& player = dataOf(object);
    const double frames = loopFrameAt(player, seconds);
    storeRelaxed(player.loopIn, frames);
    if (frames > loadRelaxed(player.loopOut)) storeRelaxed(player.loopOut, frames);
}

void setLoopOut(REALobjectStruct* object, HostInteger, double seconds)
{
    AUPlayerData& player = dataOf(object);
    UInt32 frames = loopFrameAt(player, seconds);
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

UInt32 loopedPosition(const AUPlayerData& player, UInt32 position)
{
    const double in = loadRelaxed(player.loopIn);
    if (in > position) position = frameAt(in);
    return position >= loadRelaxed(player.loopOut) ? frameAt(in) : position;
}

} // namespace auplayer
