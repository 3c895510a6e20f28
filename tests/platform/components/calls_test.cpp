// Tests of component calls: passing a call's arguments to a C function, and passing a call on to an instance.
#include "tests/platform/components/own_component.h"

#include <AudioUnit/AudioUnit.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace test;

/// The arguments of the most recent call of a handler.
std::vector<long> seen;

template <class... Arguments>
ComponentResult handler(Arguments... arguments)
{
    seen = {static_cast<long>(arguments)...};
    return 0x12345678;
}

template <class... Arguments>
ProcPtr procedure(ComponentResult (*function)(Arguments...))
{
    return reinterpret_cast<ProcPtr>(function);
}

/// Returns  a handler with the parameter types `Arguments` after the storage.
template <class... Arguments>
ProcPtr handlerFor()
{
    return procedure(handler<long, Arguments...>);
}

constexpr long storageWord = 0x5A5A5A5A;

struct Call {
    ComponentParameters parameters;
    long more[63];
};

Call callWith(const std::vector<long>& words, int paramSize = -1)
{
    Call made = {};
    made.parameters.what = 300;
    made.parameters.paramSize =
        static_cast<UInt8>(paramSize < 0 ? static_cast<int>(words.size() * sizeof(long)) : paramSize);
    if (!words.empty())
        std::memcpy(reinterpret_cast<char*>(&made) + offsetof(ComponentParameters, params), words.data(),
                    words.size() * sizeof(long));
    return made;
}

ComponentResult callFunction(Call made, ProcPtr function, ProcInfoType word)
{
    seen.clear();
    return CallComponentFunctionWithStorageProcInfo(reinterpret_cast<Handle>(storageWord), &made.parameters,
                                                    function, word);
}

using S = short;
using B = UInt8;

TEST(ComponentCalls, AreUnpackedByTheirProcedureInformation)
{
    constexpr long most = 0x7FFFFFFF, least = -most - 1;
    const struct {
        ProcInfoType word;
        ProcPtr function;
        std::vector<long> words, seen;
        const char* why;
    } facts[] = {
        // clang-format off
        {0xF0,   handlerFor<>(),                 {},                      {},                      "no arguments"},
        {0xF0,   handlerFor<>(),                 {1, 2},                  {},                      "more arguments than parameters"},
        {0x2F0,  handlerFor<S>(),                {259},                   {259},                   "a short"},
        {0x2F0,  handlerFor<S>(),                {-4},                    {-4},                    "a short below 0"},
        {0x2F0,  handlerFor<S>(),                {-32768},                {-32768},                "the smallest"},
        {0x2F0,  handlerFor<S>(),                {32767},                 {32767},                 "the largest"},
        {0x2F0,  handlerFor<S>(),                {0x1FFFF},               {-1},                    "only the lower half counts"},
        {0x3F0,  handlerFor<long>(),             {most},                  {most},                  "a word"},
        {0x3F0,  handlerFor<long>(),             {least},                 {least},                 "a word below 0"},
        {0xFF0,  handlerFor<long, long>(),       {1, least},              {1, least},              "two words"},
        {0xEF0,  handlerFor<S, long>(),          {-1, most},              {-1, most},              "a short and a word"},
        {0xEF0,  handlerFor<S, long>(),          {0x7FFF8001, 5},         {-32767, 5},             "a short and a word"},
        {0x3FF0, handlerFor<long, long, long>(), {'a', -2, most},         {'a', -2, most},         "three words"},
        {0x1F0,  handlerFor<B>(),                {0x1FF},                 {0xFF},                  "a byte has no sign"},
        {0x5F0,  handlerFor<B, B>(),             {1, -1},                 {1, 0xFF},               "bytes have a word each"},
        // clang-format on
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(std::to_string(fact.word) + ": " + fact.why);
        EXPECT_EQ(callFunction(callWith(fact.words), fact.function, fact.word), 0x12345678);
        std::vector<long> expected = {storageWord};
        expected.insert(expected.end(), fact.seen.begin(), fact.seen.end());
        EXPECT_EQ(seen, expected);
    }
}

TEST(ComponentCalls, KeepTheOrderOfEveryPairOfWidths)
{
    const struct {
        ProcInfoType code;
        long value, asSeen;
    } widths[] = {{1, -3, 0xFD}, {2, -300, -300}, {3, -70000, -70000}};
    const ProcPtr functions[3][3] = {
        {handlerFor<B, B>(), handlerFor<B, S>(), handlerFor<B, long>()},
        {handlerFor<S, B>(), handlerFor<S, S>(), handlerFor<S, long>()},
        {handlerFor<long, B>(), handlerFor<long, S>(), handlerFor<long, long>()},
    };
    for (int one = 0; one < 3; ++one)
        for (int other = 0; other < 3; ++other) {
            const ProcInfoType word = 0xF0 | widths[one].code << 8 | widths[other].code << 10;
            EXPECT_EQ(
                callFunction(callWith({widths[one].value, widths[other].value}), functions[one][other], word),
                0x12345678);
            EXPECT_EQ(seen, (std::vector<long>{storageWord, widths[one].asSeen, widths[other].asSeen}));
        }
}

TEST(ComponentCalls, ReadMissingArgumentsAsZero)
{
    const ProcPtr function = handlerFor<long, long, long>();
    const int word = sizeof(long);
    const struct {
        int paramSize;
        std::vector<long> seen;
    } facts[] = {
        {3 * word, {1, 2, 3}}, {3 * word - 1, {1, 2, 0}}, {2 * word, {1, 2, 0}}, {2 * word - 1, {1, 0, 0}},
        {word, {1, 0, 0}},     {word - 1, {0, 0, 0}},     {1, {0, 0, 0}},        {0, {0, 0, 0}},
        {255, {1, 2, 3}}};
    for (const auto& fact : facts) {
        callFunction(callWith({1, 2, 3}, fact.paramSize), function, 0x3FF0);
        std::vector<long> expected = {storageWord};
        expected.insert(expected.end(), fact.seen.begin(), fact.seen.end());
        EXPECT_EQ(seen, expected) << fact.paramSize;
    }
}

template <class Result>
Result answer()
{
    return static_cast<Result>(-2);
}

TEST(ComponentCalls, ReturnResultsOfEachWidth)
{
    EXPECT_EQ(callFunction(callWith({}), reinterpret_cast<ProcPtr>(&answer<ComponentResult>), 0xF0), -2);
    EXPECT_EQ(callFunction(callWith({}), reinterpret_cast<ProcPtr>(&answer<short>), 0xE0), -2);
    EXPECT_EQ(callFunction(callWith({}), reinterpret_cast<ProcPtr>(&answer<UInt8>), 0xD0), 0xFE);
    EXPECT_EQ(callFunction(callWith({}), reinterpret_cast<ProcPtr>(&answer<void>), 0xC0), 0);
    EXPECT_EQ(callFunction(callWith({}), reinterpret_cast<ProcPtr>(&answer<ComponentResult>), 0xF1), -2)
        << "there is one calling convention";
    EXPECT_EQ(callFunction(callWith({}), reinterpret_cast<ProcPtr>(&answer<ComponentResult>), 0x30), -2)
        << "no parameters at all";
}

ComponentResult thirteen(long a, long b, long c, long d, long e, long f, long g, long h, long i, long j,
                         long k, long l, long m)
{
    seen = {a, b, c, d, e, f, g, h, i, j, k, l, m};
    return 13;
}

TEST(ComponentCalls, HaveAtMost13Parameters)
{
    const ProcInfoType word = 0x30 | 0xFFFFFFC0;
    EXPECT_EQ(callFunction(callWith({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), procedure(thirteen), word), 13);
    EXPECT_EQ(seen, (std::vector<long>{storageWord, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    if (sizeof(ProcInfoType) > 4) {
        const auto more = static_cast<ProcInfoType>(~0ULL);
        EXPECT_EQ(callFunction(callWith({}), procedure(thirteen), more), paramErr);
        EXPECT_TRUE(seen.empty());
    }
}

TEST(ComponentCalls, NeedAFunctionAndArguments)
{
    EXPECT_EQ(callFunction(callWith({}), nullptr, 0xF0), paramErr);
    EXPECT_EQ(CallComponentFunctionWithStorageProcInfo(nullptr, nullptr, handlerFor<>(), 0xF0), paramErr);
    EXPECT_EQ(DelegateComponentCall(nullptr, nullptr), paramErr);
}

TEST(ComponentCalls, AreDelegatedUnchanged)
{
    resetOwn();
    const Component component = registerOwn();
    const ComponentInstance instance = OpenComponent(component);
    own().requests.clear();
    own().answer = [](ComponentParameters& parameters, Handle) -> ComponentResult {
        EXPECT_EQ(parameters.flags, 0x42);
        return parameters.what - 1000;
    };
    for (int what : {-32768, -6, -5, -4, -3, -2, -1, 0, 1, 255, 256, 259, 300, 32767}) {
        Call made = callWith({1, 2, 3, 4, 5});
        made.parameters.flags = 0x42;
        made.parameters.what = static_cast<SInt16>(what);
        EXPECT_EQ(DelegateComponentCall(&made.parameters, instance), what - 1000);
        EXPECT_EQ(own().requests.back(), (Request{static_cast<short>(what), nullptr, {1, 2, 3, 4, 5}}));
    }
    EXPECT_EQ(CountComponentInstances(component), 1) << "a delegated open or close is only a call";
    own().answer = nullptr;
    EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(UnregisterComponent(component), noErr);
    resetOwn();
}

TEST(ComponentCalls, AreDelegatedToBuiltInComponents)
{
    SoundComponentData format = {0, 'sowt', 2, 16, 0xAC440000, 100, nullptr, 0};
    ComponentInstance mixer = nullptr;
    ASSERT_EQ(OpenMixerSoundComponent(&format, 0, &mixer), noErr);
    const ComponentInstance unit = OpenDefaultComponent('auou', 'genr');
    SoundSource source = nullptr;
    EXPECT_EQ(call(mixer, kSoundComponentAddSourceSelect, {reinterpret_cast<long>(&source)}), noErr);
    EXPECT_NE(source, nullptr);
    short channels = 0;
    EXPECT_EQ(call(mixer, kSoundComponentGetInfoSelect,
                   {reinterpret_cast<long>(source), 'chan', reinterpret_cast<long>(&channels)}),
              noErr);
    EXPECT_EQ(channels, 2);
    EXPECT_EQ(call(mixer, kSoundComponentGetInfoSelect, {reinterpret_cast<long>(source), 'chan'}), paramErr)
        << "an argument is missing";
    for (short what = -6; what <= 300; ++what) {
        const bool isOurs = what == 4 || (what >= 257 && what <= 264);
        EXPECT_EQ(call(mixer, what, {}), isOurs ? ComponentResult{paramErr} : badComponentSelector) << what;
        EXPECT_EQ(call(unit, what, {}), badComponentSelector) << what;
    }
    EXPECT_EQ(CloseComponent(mixer), noErr);
    EXPECT_EQ(CloseComponent(unit), noErr);
    for (ComponentInstance none :
         {mixer, unit, static_cast<ComponentInstance>(nullptr), reinterpret_cast<ComponentInstance>(&format)})
        EXPECT_EQ(call(none, kSoundComponentAddSourceSelect, {0}), badComponentInstance);
}

TEST(ComponentCalls, OfSoundFunctionsReachARegisteredComponent)
{
    resetOwn();
    const Component component = registerOwn();
    const ComponentInstance instance = OpenComponent(component);
    own().requests.clear();
    own().answer = [](ComponentParameters&, Handle) -> ComponentResult { return -77; };
    const auto source = reinterpret_cast<SoundSource>(3);
    SoundSource sources[1] = {source};
    SoundParamBlock block = {};
    SoundComponentDataPtr data = nullptr;
    const auto word = [](const void* pointer) { return reinterpret_cast<long>(pointer); };
    EXPECT_EQ(SoundComponentInitOutputDevice(instance, -5), -77);
    EXPECT_EQ(SoundComponentGetSourceData(instance, &data), -77);
    EXPECT_EQ(SoundComponentAddSource(instance, sources), -77);
    EXPECT_EQ(SoundComponentRemoveSource(instance, source), -77);
    EXPECT_EQ(SoundComponentGetInfo(instance, source, 'chan', &block), -77);
    EXPECT_EQ(SoundComponentSetInfo(instance, source, 'chan', reinterpret_cast<void*>(2)), -77);
    EXPECT_EQ(SoundComponentStartSource(instance, -1, sources), -77);
    EXPECT_EQ(SoundComponentStopSource(instance, 32767, sources), -77);
    EXPECT_EQ(SoundComponentPauseSource(instance, 0, nullptr), -77);
    EXPECT_EQ(SoundComponentPlaySourceBuffer(instance, source, &block, 0x30001), -77);
    const std::vector<Request> expected = {
        {1, nullptr, {-5}},
        {4, nullptr, {word(&data)}},
        {257, nullptr, {word(sources)}},
        {258, nullptr, {3}},
        {259, nullptr, {3, 'chan', word(&block)}},
        {260, nullptr, {3, 'chan', 2}},
        {261, nullptr, {-1, word(sources)}},
        {262, nullptr, {32767, word(sources)}},
        {263, nullptr, {0, 0}},
        {264, nullptr, {3, word(&block), 0x30001}},
    };
    EXPECT_EQ(own().requests, expected);
    own().answer = nullptr;
    EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(UnregisterComponent(component), noErr);
    resetOwn();
}

} // namespace
