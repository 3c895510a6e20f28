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

/// Removes a live listener at the end of the scope, also when the platform's call throws.
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
    addLiveListener(object); // before the platform can send the first notification
    const AudioObjectPropertyAddress address = addressOf(data);
    data.lastError = AudioObjectAddPropertyListener(data.objectID, &address, propertyChanged, object);
}

void destruct(REALobjectStruct* object)
{
    const Removal afterUnregistration = {object}; // until then the platform may send notifications
    ListenerData& data = dataOf(object);
    data.lastError = -1;
    const AudioObjectPropertyAddress address = addressOf(data);
    data.lastError = AudioObjectRemovePropertyListener(data.objectID, &address, propertyChanged, object);
}

} // namespace listener
