#include "listener/changed_event.h"

#include "listener/live_listeners.h"
#include "plugin/catch_all.h"
#include "plugin/process_state.h"
#include "plugin/services.h"
#include "plugin/weak_symbols.h"

#include <pthread.h>

namespace listener {

namespace {

/// The word that the host filled at registration: in the record itself, or, for a host of the oldest layout,
/// in the copy to which our own word then leads. Null if there was no memory for that copy.
const Word* eventSystemUse()
{
    const Word& word = changedEvent[0].systemUse;
    if (CurrentREALControlVersion != oldestLayout) return &word;
    return word ? &reinterpret_cast<const REALevent9*>(word)->systemUse : nullptr;
}

/// Call the host program's handler, if it attached one. [main]
void raiseChanged(REALobjectStruct* object, Serial moment)
{
    const Word* event = eventSystemUse();
    if (!event || !isMeantFor(object, moment)) return;
    if (AnyFunction handler = REALGetEventInstance(object, *event))
        reinterpret_cast<void (*)(REALobjectStruct*)>(handler)(object);
}

/// Queue the event for the main thread. [any]
void queueChanged(REALobjectStruct* object, Serial moment)
{
    dispatch_async(dispatch_get_main_queue(), ^{
      catchingAll<raiseChanged>(object, moment);
    });
}

} // namespace

REALevent changedEvent[1] = {{"Changed", 0, {0, 0}}};

OSStatus propertyChanged(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void* client)
{
    const auto object = static_cast<REALobjectStruct*>(client);
    const Serial moment = latestSerial();
    if (pthread_main_np())
        catchingAll<raiseChanged>(object, moment);
    else if (dispatch_async)
        catchingAll<queueChanged>(object, moment); // an event that cannot be queued is dropped
    return noErr;
}

} // namespace listener
