#include "listener/changed_event.h"

#include "listener/live_listeners.h"
#include "plugin/exception_border.h"
#include "plugin/process_state.h"
#include "plugin/services.h"
#include "plugin/weak_symbols.h"

#include <pthread.h>

namespace listener {

namespace {

/// Address of the key for the host program's handler. At registration, the host writes the key into the
/// event. In layout 9, the host writes the key into a copy, whose address is in `systemUse` of the event. The
/// result is null if there was no memory for the copy.
const Word* eventSystemUse()
{
    const Word& word = changedEvent[0].systemUse;
    if (CurrentREALControlVersion != oldestLayout) return &word;
    return word ? &reinterpret_cast<const REALevent9*>(word)->systemUse : nullptr;
}

/// Call the host program's handler of the event, if the object has a handler.
/// [main]
void raiseChanged(REALobjectStruct* object, Serial recordedSerial)
{
    const Word* event = eventSystemUse();
    if (!event || !belongsTo(object, recordedSerial)) return;
    if (AnyFunction handler = REALGetEventInstance(object, *event))
        reinterpret_cast<void (*)(REALobjectStruct*)>(handler)(object);
}

/// Queue the event on the main dispatch queue.
/// [any]
void queueChanged(REALobjectStruct* object, Serial recordedSerial)
{
    dispatch_async(dispatch_get_main_queue(), ^{
      catchingAll<raiseChanged>(object, recordedSerial);
    });
}

} // namespace

REALevent changedEvent[1] = {{"Changed", 0, {0, 0}}};

OSStatus propertyChanged(AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void* client)
{
    const auto object = static_cast<REALobjectStruct*>(client);
    const Serial recordedSerial = latestSerial();
    if (pthread_main_np())
        catchingAll<raiseChanged>(object, recordedSerial);
    else if (dispatch_async)
        catchingAll<queueChanged>(object, recordedSerial); // drops the event if dispatch_async throws
    return noErr;
}

} // namespace listener
