// From a host object to the class data inside it.
#pragma once

#include "abi/class_definition.h"

/// The class data of `object`: at the offset that the host wrote into the definition when it registered the
/// class.
template <class Data>
Data& classData(REALobjectStruct* object, const REALclassDefinition& definition)
{
    return *reinterpret_cast<Data*>(reinterpret_cast<char*>(object) + definition.dataOffset);
}
