// Expectations about a class table, which a test states as a literal table of facts.
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <limits>
#include <string>
#include <vector>

namespace support {

struct ClassFacts {
    const char* name;
    Word dataSize; ///< size of the class data in bytes
    Word properties, methods;
    Word events = 0, constants = 0, sharedMethods = 0;
    bool hasLifetimeFunctions = true; ///< whether the class has a constructor and a destructor function
};

/// Expect that the class definition has the newest layout, these sizes and counts, the flags 4, and zeros in
/// all other words.
void expectClass(const REALclassDefinition& definition, const ClassFacts& facts);

enum class Access {
    getter,          ///< read-only, through a getter function
    accessors,       ///< through a getter and a setter function
    field,           ///< a read-only field of the class data
    writableField,   ///< a field of the class data that the host writes directly
    fieldWithSetter, ///< a field of the class data that the host writes through a setter function
};

struct PropertyFact {
    const char* name;
    const char* type;
    Access access;
    HostInteger offset = 0; ///< offset of a field in the class data
    const char* group = "";
};

struct MethodFact {
    const char* declaration;
    Word flags = 4;
    bool isIndexedProperty = false; ///< whether the row has a setter, too
};

/// Expect that the class has exactly these properties, methods or constants, in this order.
void expectProperties(const REALclassDefinition& definition, const std::vector<PropertyFact>& facts);
void expectMethods(const void* rows, Word count, const std::vector<MethodFact>& facts);
void expectConstants(const REALclassDefinition& definition, const std::vector<const char*>& declarations);

/// Expect that all rows together, with the constructor and the destructor, name `count` different functions.
void expectDifferentFunctions(const REALclassDefinition& definition, std::size_t count);

/// Register a copy of the class with the existing fake host, in the newest layout. Expect that the copy
/// refers to the same tables of properties, methods and constants.
void expectRegisteredUnchanged(const REALclassDefinition& definition);

/// Register a copy of the class with the existing fake host, in layout 9. Expect that the copy refers to
/// copies of the tables, without the words that layout 9 lacks.
void expectRegisteredInLayout9(const REALclassDefinition& definition);

/// Values to pass to a getter that ignores its parameter; a host passes 0.
constexpr HostInteger anyParameter[] = {
    0, 1, -1, 4711, std::numeric_limits<HostInteger>::max(), std::numeric_limits<HostInteger>::min()};

template <class T>
T callGetter(const REALproperty& row, REALobjectStruct* object, HostInteger parameter)
{
    return reinterpret_cast<T (*)(REALobjectStruct*, HostInteger)>(row.getter)(object, parameter);
}

/// Return the value of a property with a numeric type and a getter function, as text.
std::string valueOf(const REALproperty& row, REALobjectStruct* object, HostInteger parameter);

/// Expect that the getter returns `value` for each value in anyParameter, because the getter ignores it.
void expectValue(const REALproperty& row, REALobjectStruct* object, const std::string& value);

} // namespace support
