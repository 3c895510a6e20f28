// The class Probe of the test plug-in: the class data, and the functions that fill the class definition.
#pragma once

#include "tests/host/runtime/test_plugin/frame.h"

#include <cstddef>

namespace probing {

struct ProbeData {
    std::uint8_t boolean;
    std::int8_t int8;
    std::int16_t int16;
    std::int32_t int32;
    alignas(8) std::int64_t int64;
    std::uint8_t uint8;
    std::uint16_t uint16;
    std::uint32_t uint32;
    alignas(8) std::uint64_t uint64;
    alignas(8) double number;
    float single;
    unsigned char crooked[8]; ///< a double in bytes, because it is not 8-aligned
    HostInteger integer;
    void* pointer;
    REALstringStruct* text;
    REALobjectStruct* object;
    REALobjectStruct* variant;
    REALmemoryBlockStruct* block;
    REALfolderItemStruct* folder;
    REALarrayStruct* numbers;
    double slots[4];
    HostInteger computed[3];
    char written[32];
};
static_assert(offsetof(ProbeData, crooked) % 8 == 4);

extern REALclassDefinition probeClass;

template <class Data>
Data& dataOf(REALobjectStruct* object, const REALclassDefinition& definition)
{
    return *reinterpret_cast<Data*>(reinterpret_cast<char*>(object) + definition.dataOffset);
}
inline ProbeData& probe(REALobjectStruct* object) { return dataOf<ProbeData>(object, probeClass); }

template <class Row, std::size_t rows>
void put(void*& array, Word& count, Row (&list)[rows])
{
    array = list;
    count = rows;
}

void putProperties(REALclassDefinition& definition);
void putMethods(REALclassDefinition& definition);
void putEvents(REALclassDefinition& definition);

// Methods of Probe that raise the events of Probe.
std::uint8_t fire(REALobjectStruct* object);
REALstringStruct* ask(REALobjectStruct* object, HostInteger a, double b, REALstringStruct* c, std::uint8_t d);
std::uint8_t judge(REALobjectStruct* object, std::int8_t v);
double halve(REALobjectStruct* object, double v);
float narrow(REALobjectStruct* object, float v);
std::uint64_t widen(REALobjectStruct* object, std::uint64_t v);
std::int16_t negate(REALobjectStruct* object, std::int16_t v);
AnyFunction askWithGarbage(REALobjectStruct* object);

} // namespace probing
