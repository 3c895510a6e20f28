// The class table of CoreAudioListenerKVX.
#include "plugin/class_table.h"
#include "listener/changed_event.h"
#include "listener/listener.h"
#include "plugin/classes.h"

namespace listener {

namespace {

template <std::uint32_t ListenerData::*field>
std::uint32_t get(REALobjectStruct* object, HostInteger)
{
    return dataOf(object).*field;
}

using namespace table;
using Data = ListenerData;

// clang-format off
REALproperty properties[] = {
    //           name                type       getter or field               setter
    KVX_FIELD   ("LastError",        asInteger, lastError,                    readOnly),
    KVX_PROPERTY("ObjectID",         asUInt32,  get<&Data::objectID>,         readOnly),
    KVX_PROPERTY("PropertySelector", asUInt32,  get<&Data::propertySelector>, readOnly),
    KVX_PROPERTY("PropertyScope",    asUInt32,  get<&Data::propertyScope>,    readOnly),
    KVX_PROPERTY("PropertyElement",  asUInt32,  get<&Data::propertyElement>,  readOnly),
};

REALmethod methods[] = {
    //         function   declaration
    KVX_METHOD(construct, "Constructor(ObjectID as UInt32, PropertySelector as UInt32, PropertyScope as UInt32, PropertyElement as UInt32)"),
    KVX_METHOD(destruct,  "Destructor"),
};
// clang-format on

static_assert(std::size(properties) == 5, "the class is published with 5 properties");
static_assert(std::size(methods) == 2, "the class is published with 2 methods");

} // namespace

} // namespace listener

// The class definition has no constructor and destructor; both are methods, because the constructor has
// arguments.
REALclassDefinition coreAudioListenerClass = table::classDefinition<listener::ListenerData, nullptr, nullptr>(
    "CoreAudioListenerKVX", {listener::properties, listener::methods, listener::changedEvent});
