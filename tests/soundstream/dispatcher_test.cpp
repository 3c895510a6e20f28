// The component's entry point: each selector, its handler, and the procedure information of the handler.
#include "tests/soundstream/stream_fixture.h"

#include <algorithm>
#include <iterator>

namespace {

using namespace soundstream_test;

class SoundStreamDispatcher : public StreamTest {};

// clang-format off
const struct Selector { SInt16 what; const char* words; bool canDo; const char* name; } selectors[] = {
    { -4, "0xF0",   true,  "version"},
    { -3, "0x2F0",  true,  "can do"},
    { -2, "0x3F0",  true,  "close"},
    { -1, "0x3F0",  true,  "open"},
    {  1, "0x3F0",  true,  "init output device"},
    {259, "0x3FF0", true,  "get info"},
    {260, "0x3FF0", true,  "set info"},
    {261, "0xEF0",  true,  "start source"},
    {262, "0xEF0",  false, "stop source, which CanDo denies"},
    {263, "0xEF0",  false, "pause source, which CanDo denies"},
    {264, "0x3FF0", true,  "play source buffer"},
};
// clang-format on

const Selector* find(int what)
{
    const auto* const found = std::find_if(std::begin(selectors), std::end(selectors),
                                           [&](const Selector& row) { return row.what == what; });
    return found == std::end(selectors) ? nullptr : found;
}

TEST_F(SoundStreamDispatcher, CallsAHandlerDelegatesOrRefuses)
{
    open();
    const ComponentInstance instance = openInstanceWithMixer();
    sound_spy::platform().callsHandlers = false;
    spy::answer("CallComponentFunctionWithStorageProcInfo").status = 4711;
    spy::answer("DelegateComponentCall").status = 4712;
    const auto expect = [&](int what) {
        SCOPED_TRACE(what);
        spy::forgetCalls();
        const ComponentResult result = send(instance, static_cast<SInt16>(what), {1, 2, 3});
        if (const Selector* const row = find(what)) {
            EXPECT_EQ(result, 4711) << "the handler's result";
            EXPECT_EQ(spy::calls(),
                      (Notes{std::string("CallComponentFunctionWithStorageProcInfo(storage1, the request, a "
                                         "handler, ") +
                             row->words + ")"}))
                << row->name;
        } else if (what >= 256) {
            EXPECT_EQ(result, 4712) << "the mixer's result";
            EXPECT_EQ(spy::calls(), (Notes{"DelegateComponentCall(the request, mixer1)"}));
        } else {
            EXPECT_EQ(static_cast<UInt32>(result), 0x80008002u);
            EXPECT_EQ(spy::calls(), Notes());
        }
    };
    for (int what = -6; what <= 300; ++what) expect(what);
    for (const int what : {-32768, -1000, -257, -256, 301, 512, 1000, 32767}) expect(what);
}

TEST_F(SoundStreamDispatcher, DelegatesToNullWithoutAMixer)
{
    spy::answer("DelegateComponentCall").status = -7;
    EXPECT_EQ(sendWith(nullptr, 256, {}), -7);
    open();
    const ComponentInstance instance = openInstance(); // the mixer of the new instance is not open yet
    EXPECT_EQ(send(instance, 257, {0}), -7);
    EXPECT_EQ(spy::calls(), (Notes{"DelegateComponentCall(the request, null)"}));
}

TEST_F(SoundStreamDispatcher, CanDoAnswersByTheTable)
{
    open();
    const ComponentInstance instance = openInstance();
    int answered = 0;
    for (int what = -6; what <= 300; ++what) {
        const Selector* const row = find(what);
        const ComponentResult expected = row && row->canDo;
        EXPECT_EQ(send(instance, -3, {what}), expected) << what;
        EXPECT_EQ(sendWith(nullptr, -3, {what}), expected) << what << ": before it is open";
        answered += expected;
    }
    EXPECT_EQ(answered, 9);
    EXPECT_EQ(send(instance, -3, {262}), 0) << "although StopSource works";
    EXPECT_EQ(send(instance, -3, {263}), 0) << "although PauseSource works";
    for (const long what : {-32768L, 32767L}) EXPECT_EQ(send(instance, -3, {what}), 0);
    EXPECT_EQ(send(instance, -3, {0x7FFF0000 + 259}), 1) << "the selector has 16 bits";
}

TEST_F(SoundStreamDispatcher, ReturnsTheVersion)
{
    open();
    EXPECT_EQ(send(openInstance(), -4, {}), 0x00010000);
    EXPECT_EQ(sendWith(nullptr, -4, {}), 0x00010000);
}

// ---- exceptions ----

TEST_F(SoundStreamDispatcher, ThePlatformsExceptionsStayInside)
{
    open();
    const ComponentInstance instance = openInstanceWithMixer();
    spy::script().inEachCall = [](std::size_t) { throw Thrown(); };
    for (const SInt16 what : {-6, 0, 2, 255}) EXPECT_EQ(UInt32(send(instance, what, {})), 0x80008002u);
    for (const SInt16 what : {-4, -3, 1, 256, 259, 261, 300})
        EXPECT_EQ(send(instance, what, {0, 0, 0}), memFullErr);
}

TEST_F(SoundStreamDispatcher, AnExceptionInsideAHandlerIsReportedAsMemFullErr)
{
    // clang-format off
    const struct { SInt16 what; const char* function; const char* why; } facts[] = {
        {1,   "OpenMixerSoundComponent",        "init output device"},
        {259, "SoundComponentGetInfo",          "get info"},
        {260, "SoundComponentSetInfo",          "set info"},
        {261, "SoundComponentStartSource",      "start source"},
        {262, "SoundComponentStopSource",       "stop source"},
        {263, "SoundComponentPauseSource",      "pause source"},
        {264, "SoundComponentPlaySourceBuffer", "play source buffer"},
    };
    // clang-format on
    open();
    const ComponentInstance instance = openInstanceWithMixer();
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        spy::answer(fact.function).during = [] { throw Thrown(); };
        const bool wasActive = object().isActive();
        EXPECT_EQ(send(instance, fact.what, {0, 'what', 0}), memFullErr);
        EXPECT_EQ(object().isActive(), wasActive);
        EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(instance))
            << "the instance stays audible";
        spy::answer(fact.function).during = nullptr;
        EXPECT_EQ(send(instance, fact.what, {0, 'what', 0}), noErr);
    }

    spy::answer("NewHandle").during = [] { throw Thrown(); };
    SoundInfoList list = {};
    EXPECT_EQ(send(instance, 259, {0, siSampleRateAvailable, reinterpret_cast<long>(&list)}), memFullErr);
    EXPECT_TRUE(list.infoHandle == nullptr);
}

TEST_F(SoundStreamDispatcher, AFailedOpenLeaksNothing)
{
    for (const char* const function : {"GetComponentRefcon", "SetComponentInstanceStorage"}) {
        SCOPED_TRACE(function);
        startOver();
        open();
        spy::answer(function).during = [] { throw Thrown(); };
        const ComponentInstance instance = sound_spy::newInstance();
        EXPECT_EQ(send(instance, -1, {reinterpret_cast<long>(instance)}), memFullErr);
        EXPECT_EQ(sound_spy::storageOf(instance), nullptr);
        EXPECT_EQ(object().state()->refconRecord->globals, nullptr);
    }
}

TEST_F(SoundStreamDispatcher, AnInstanceIsClosedThoughItsMixerThrows)
{
    open();
    const ComponentInstance instance = sound_spy::newInstance();
    EXPECT_EQ(send(instance, -1, {reinterpret_cast<long>(instance)}), noErr);
    EXPECT_EQ(send(instance, 1, {0}), noErr);
    spy::answer("CloseMixerSoundComponent").during = [] { throw Thrown(); };
    EXPECT_EQ(send(instance, -2, {reinterpret_cast<long>(instance)}), noErr);
    EXPECT_EQ(object().state()->refconRecord->globals, nullptr);
}

} // namespace
