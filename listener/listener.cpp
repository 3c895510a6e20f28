#include "listener/listener.h"

#include "listener/changed_event.h"
#include "listener/live_listeners.h"
#include "plugin/class_data.h"
#include "plugin/classes.h"

namespace listener {

namespace {

AudioObjectPropertyAddress addressOf(const ListenerData& data)
{
    return {data.propertySelector, data.propertyScope, data.propertyElement};
}

/// Removes an object from the list of live listeners at the end of the scope, even if the platform call
/// throws.
struct Removal {
    REALobjectStruct* object;
    ~Removal() { removeLiveListener(object); }
};

} // namespace

ListenerData& dataOf(REALobjectStruct* object)
{
    return classData<ListenerData>(object, coreAudioListenerClass);
}

void construct(REALobjectStruct* object, std::uint32_t objectID, std::uint32_t selector, std::uint32_t scope,
               std::uint32_t element)
{
    ListenerData& data = dataOf(object);
    data = {-1, objectID, selector, scope, element};
    // The object must be in the list before the platform call, after which notifications can arrive.
    addLiveListener(object);
    const AudioObjectPropertyAddress address = addressOf(data);
    data.lastError = AudioObjectAddPropertyListener(data.objectID, &address, propertyChanged, object);
}

void destruct(REALobjectStruct* object)
{
    // The object leaves the list after the platform call, because notifications can arrive until that call
    // returns.
    const Removal afterUnregistration = {object};
    ListenerData& data = dataOf(object);
    data.lastError = -1;
    const AudioObjectPropertyAddress address = addressOf(data);
    data.lastError = AudioObjectRemovePropertyListener(data.objectID, &address, propertyChanged, object);
}

} // namespace listener
