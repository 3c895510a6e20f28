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
    addLiveListener(object); // before the first notification can come
    const AudioObjectPropertyAddress address = addressOf(data);
    data.lastError = AudioObjectAddPropertyListener(data.objectID, &address, propertyChanged, object);
}

void destruct(REALobjectStruct* object)
{
    removeLiveListener(object);
    ListenerData& data = dataOf(object);
    data.lastError = -1;
    const AudioObjectPropertyAddress address = addressOf(data);
    data.lastError = AudioObjectRemovePropertyListener(data.objectID, &address, propertyChanged, object);
}

} // namespace listener
