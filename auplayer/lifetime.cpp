#include "auplayer/lifetime.h"

#include "auplayer/au_player.h"
#include "plugin/release.h"
#include "plugin/services.h"

#include <cstdlib>
#include <new>

namespace auplayer {

namespace {

/// Set `field` to null and return its former value.
template <class Pointer>
Pointer take(Pointer& field)
{
    const Pointer value = field;
    field = nullptr;
    return value;
}

} // namespace

void AUPlayerConstructor(REALobjectStruct* object)
{
    AUPlayerData& player = dataOf(object);
    player.loopIn = player.loopOut = unset;
    player.isLooping = false;
    player.loadedAudio = static_cast<LoadedAudio*>(std::calloc(1, sizeof(LoadedAudio)));
    player.outputFormat = new (std::nothrow) CAStreamBasicDescription();
    player.clientFormat = new (std::nothrow) CAStreamBasicDescription();
}

void AUPlayerDestructor(REALobjectStruct* object)
{
    AUPlayerData& player = dataOf(object);
    if (player.graph) release(DisposeAUGraph, take(player.graph));
    if (player.loadedAudio) std::free(take(player.loadedAudio->samples));
    delete take(player.clientFormat);
    delete take(player.outputFormat);
    std::free(take(player.loadedAudio));
    if (player.tag) release(REALUnlockObject, take(player.tag));
    if (player.file) release(REALUnlockObject, asObject(take(player.file)));
}

} // namespace auplayer
