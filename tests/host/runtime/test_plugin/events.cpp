// Events of the class Probe, with every kind of argument and result, and the methods that raise these events.
#include "tests/host/runtime/test_plugin/probe.h"

namespace probing {

namespace {

REALevent probeEvents[] = {
    {"Fired", 0, {}},
    {"Asked(a as integer, b as double, c as string, d as boolean) as string", 0, {}},
    {"Judged(v as Int8) as boolean", 0, {}},
    {"Halved(v as double) as double", 0, {}},
    {"Narrowed(v as single) as single", 0, {}},
    {"Widened(v as UInt64) as UInt64", 0, {}},
    {"Negated(v as Int16) as Int16", 0, {}},
};

AnyFunction handlerOf(std::size_t index, REALobjectStruct* object)
{
    // In layout 9, the host has written the keys into the short copies of the rows that registerClass() made.
    const auto* older = static_cast<const REALevent9*>(probeClass.events);
    const Word use = layout == oldestLayout ? older[index].systemUse : probeEvents[index].systemUse;
    return service<AnyFunction(REALobjectStruct*, Word)>("GetEventInstance")(object, use);
}

template <class Result, class... Arguments>
Result raiseEvent(std::size_t index, REALobjectStruct* object, Result otherwise, Arguments... arguments)
{
    auto* handler = handlerOf(index, object);
    if (!handler) return otherwise;
    return reinterpret_cast<Result (*)(REALobjectStruct*, Arguments...)>(handler)(object, arguments...);
}

} // namespace

std::uint8_t fire(REALobjectStruct* object)
{
    auto* handler = handlerOf(0, object);
    if (!handler) return false;
    reinterpret_cast<void (*)(REALobjectStruct*)>(handler)(object);
    probe(object).uint8 = 1; // The object lives, even if the handler dropped the program's reference.
    lifeLog += "fired ";
    return true;
}
REALstringStruct* ask(REALobjectStruct* object, HostInteger a, double b, REALstringStruct* c, std::uint8_t d)
{
    return raiseEvent<REALstringStruct*>(1, object, nullptr, a, b, c, d);
}
std::uint8_t judge(REALobjectStruct* object, std::int8_t v)
{
    return raiseEvent<std::uint8_t>(2, object, std::uint8_t{1}, v);
}
double halve(REALobjectStruct* object, double v) { return raiseEvent(3, object, -1.0, v); }
float narrow(REALobjectStruct* object, float v) { return raiseEvent(4, object, -1.0f, v); }
std::uint64_t widen(REALobjectStruct* object, std::uint64_t v)
{
    return raiseEvent<std::uint64_t>(5, object, std::uint64_t{1}, v);
}
std::int16_t negate(REALobjectStruct* object, std::int16_t v)
{
    return raiseEvent<std::int16_t>(6, object, std::int16_t{1}, v);
}
AnyFunction askWithGarbage(REALobjectStruct* object)
{
    return service<AnyFunction(REALobjectStruct*, Word)>("GetEventInstance")(object, 12345);
}

void putEvents(REALclassDefinition& definition)
{
    put(definition.events, definition.eventCount, probeEvents);
}

} // namespace probing
