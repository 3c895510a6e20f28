// Access to the class data inside a host object.
#pragma once

#include "abi/class_definition.h"

/// The class data of `object`, at the offset that the host wrote into `definition` at registration.
/// [any]
template <class Data>
Data& classData(REALobjectStruct* object, const REALclassDefinition& definition)
{
    return *reinterpret_cast<Data*>(reinterpret_cast<char*>(object) + definition.dataOffset);
}
