// An instance of the component: how it is opened, is initialised, plays and is closed.
#include "tests/soundstream/stream_fixture.h"
#include "tests/support/c_library_spy.h"

#include <cstring>

namespace {

using namespace soundstream_test;

class SoundStreamInstance : public StreamTest {
protected:
    /// The platform calls that the handler of a request makes.
    Notes callsOf(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words,
                  ComponentResult expected = noErr)
    {
        spy::forgetCalls();
        EXPECT_EQ(send(instance, selector, words), expected);
        Notes calls = spy::calls();
        EXPECT_EQ(calls.at(0).substr(0, 40), "CallComponentFunctionWithStorageProcInfo");
        calls.erase(calls.begin());
        return calls;
    }

    static long wordOf(ComponentInstance instance) { return reinterpret_cast<long>(instance); }
};

// ---- Open ----

TEST_F(SoundStreamInstance, OpenCreatesTheStorage)
{
    open();
    const ComponentInstance instance = sound_spy::newInstance();
    c_library_spy::begin();
    const ComponentResult result = send(instance, -1, {wordOf(instance)});
    c_library_spy::end();
    EXPECT_EQ(result, noErr);
    EXPECT_EQ(spy::calls(),
              (Notes{"CallComponentFunctionWithStorageProcInfo(null, the request, a handler, 0x3F0)",
                     "GetComponentRefcon(instance1)", "SetComponentInstanceStorage(instance1, storage1)"}));
    const soundstream::QTSoundStreamGlobals* const globals = globalsOf(instance);
    ASSERT_NE(globals, nullptr);
    EXPECT_EQ(globals->self, instance);
    EXPECT_EQ(globals->refcon, object().state()->refconRecord);
    EXPECT_EQ(object().state()->refconRecord->globals, globals) << "the instance is audible";
    EXPECT_EQ(globals->mixer, nullptr);
    EXPECT_EQ(globals->sourceData, nullptr);
    const SoundComponentData none = {};
    EXPECT_EQ(std::memcmp(&globals->description, &none, sizeof none), 0);
    EXPECT_FALSE(object().isActive());
    closeInstance(instance);
}

TEST_F(SoundStreamInstance, OpenFailsWithoutMemory)
{
    open();
    const ComponentInstance instance = sound_spy::newInstance();
    c_library_spy::refuseCalloc(1);
    EXPECT_EQ(callsOf(instance, -1, {wordOf(instance)}, memFullErr), Notes());
    EXPECT_EQ(sound_spy::storageOf(instance), nullptr);
    EXPECT_EQ(object().state()->refconRecord->globals, nullptr);
    EXPECT_EQ(callsOf(instance, -2, {wordOf(instance)}), Notes()) << "closing without storage";
}

TEST_F(SoundStreamInstance, AnUnknownStorageCountsAsNone)
{
    open();
    const ComponentInstance instance = openInstanceWithMixer();
    const Handle storage = sound_spy::storageOf(instance);
    closeInstance(instance);
    char other[512] = {};
    for (const Handle wrong : {storage, reinterpret_cast<Handle>(other)}) {
        EXPECT_EQ(sendWith(wrong, 1, {0}), paramErr);
        EXPECT_EQ(sendWith(wrong, -2, {0}), noErr);
        spy::forgetCalls();
        EXPECT_EQ(sendWith(wrong, 261, {0, 0}), noErr);
        EXPECT_EQ(spy::calls().back(), "SoundComponentStartSource(null, 0, null)");
        EXPECT_FALSE(object().isActive());
    }
}

TEST_F(SoundStreamInstance, TheInstanceOpenedLastIsAudible)
{
    open();
    const ComponentInstance first = openInstanceWithMixer(), second = openInstanceWithMixer();
    const soundstream::RefconRecord& record = *object().state()->refconRecord;
    EXPECT_EQ(record.globals, globalsOf(second));
    send(first, 1, {0});
    EXPECT_EQ(record.globals, globalsOf(second)) << "also after the first is initialised again";
    send(second, 1, {0});
    EXPECT_EQ(record.globals, globalsOf(second));
    closeInstance(first);
    EXPECT_EQ(record.globals, nullptr) << "closing any instance silences the registration";
    send(second, 1, {0});
    EXPECT_EQ(record.globals, nullptr);
    const ComponentInstance third = openInstance();
    EXPECT_EQ(record.globals, globalsOf(third));
    closeInstance(second);
    EXPECT_EQ(record.globals, nullptr);
}

TEST_F(SoundStreamInstance, OpenReplacesTheFormerStorage)
{
    open();
    const ComponentInstance instance = openInstanceWithMixer();
    send(instance, 261, {0, 0});
    EXPECT_EQ(callsOf(instance, -1, {wordOf(instance)}),
              (Notes{"CloseMixerSoundComponent(mixer1)", "GetComponentRefcon(instance1)",
                     "SetComponentInstanceStorage(instance1, storage2)"}));
    EXPECT_FALSE(object().isActive());
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(instance));
}

TEST_F(SoundStreamInstance, AnInstanceOpenedAfterCloseComponentIsSilent)
{
    open();
    const ComponentInstance instance = sound_spy::newInstance();
    // The platform keeps a component that has instances, and keeps the component's refcon.
    object().closeComponent();
    EXPECT_EQ(callsOf(instance, -1, {wordOf(instance)}),
              (Notes{"GetComponentRefcon(instance1)", "SetComponentInstanceStorage(instance1, storage1)"}));
    EXPECT_EQ(globalsOf(instance)->refcon, nullptr);
    EXPECT_EQ(send(instance, 1, {0}), noErr);
    EXPECT_EQ(send(instance, 261, {0, 0}), noErr);
    EXPECT_FALSE(object().isActive());
    closeInstance(instance);
}

TEST_F(SoundStreamInstance, AnInstanceOfAFormerRegistrationIsSilent)
{
    open();
    const ComponentInstance early = openInstance(), late = sound_spy::newInstance();
    object().closeComponent();
    object().openComponent();
    EXPECT_EQ(send(late, -1, {wordOf(late)}), noErr);
    EXPECT_EQ(globalsOf(late)->refcon, nullptr) << "its component is unregistered";
    EXPECT_EQ(object().state()->refconRecord->globals, nullptr);
    const ComponentInstance now = openInstance();
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(now));
    closeInstance(late);
    closeInstance(early);
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(now));
}

// ---- Close ----

TEST_F(SoundStreamInstance, CloseClosesTheMixerAndFreesTheStorage)
{
    open();
    const ComponentInstance instance = openInstanceWithMixer();
    send(instance, 261, {0, 0});
    const soundstream::RefconRecord& record = *object().state()->refconRecord;
    bool wasActive = true, wasAudible = true;
    spy::answer("CloseMixerSoundComponent").during = [&] {
        wasActive = object().isActive();
        wasAudible = record.globals != nullptr;
    };
    const long blocks = c_library_spy::liveBlocks();
    EXPECT_EQ(callsOf(instance, -2, {wordOf(instance)}), (Notes{"CloseMixerSoundComponent(mixer1)"}));
    EXPECT_FALSE(wasActive) << "the stream becomes inactive first";
    EXPECT_FALSE(wasAudible) << "the render thread loses the instance before its mixer closes";
    EXPECT_EQ(record.globals, nullptr);
    EXPECT_EQ(c_library_spy::liveBlocks(), blocks - 1);
    EXPECT_EQ(callsOf(instance, -2, {wordOf(instance)}), Notes()) << "a second close does nothing";
}

TEST_F(SoundStreamInstance, CloseWithoutAMixerCallsNoPlatformFunction)
{
    open();
    const ComponentInstance instance = openInstance();
    EXPECT_EQ(callsOf(instance, -2, {wordOf(instance)}), Notes());
    EXPECT_EQ(sendWith(nullptr, -2, {0}), noErr) << "null is ignored";
}

// After a close request the platform still passes the former storage pointer, and a new storage may have the
// same address.
TEST_F(SoundStreamInstance, ASecondCloseDoesNotCloseAnotherInstanceAtTheSameAddress)
{
    open();
    const ComponentInstance first = openInstance();
    closeInstance(first);
    const ComponentInstance second = openInstanceWithMixer();
    EXPECT_EQ(sendWith(sound_spy::storageOf(second), -2, {wordOf(first)}), noErr);
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(second))
        << "the second instance stays audible";
    EXPECT_EQ(spy::live(), (Notes{"component1", "mixer1"}));
}

// ---- InitOutputDevice ----

TEST_F(SoundStreamInstance, RequestsAMixerOf16BitLittleEndianStereoAt44100)
{
    open();
    const ComponentInstance instance = openInstance();
    EXPECT_EQ(callsOf(instance, 1, {7}),
              (Notes{"OpenMixerSoundComponent({0, 'sowt', 2, 16, 0xAC440000, 1024, null, 0}, 0)"}));
    const SoundComponentData& description = globalsOf(instance)->description;
    EXPECT_EQ(description.flags, 0);
    EXPECT_EQ(description.format, 0x736F7774u);
    EXPECT_EQ(description.numChannels, 2);
    EXPECT_EQ(description.sampleSize, 16);
    EXPECT_EQ(description.sampleRate, 0xAC440000u);
    EXPECT_EQ(description.sampleCount, 1024);
    EXPECT_EQ(description.buffer, nullptr);
    EXPECT_EQ(description.reserved, 0);
    EXPECT_NE(globalsOf(instance)->mixer, nullptr);
}

TEST_F(SoundStreamInstance, InitOutputDeviceReplacesTheMixer)
{
    open();
    const ComponentInstance instance = openInstanceWithMixer();
    SoundComponentData data = {};
    globalsOf(instance)->sourceData = &data;
    globalsOf(instance)->description.sampleCount = 5;
    EXPECT_EQ(callsOf(instance, 1, {0}),
              (Notes{"CloseMixerSoundComponent(mixer1)",
                     "OpenMixerSoundComponent({0, 'sowt', 2, 16, 0xAC440000, 1024, null, 0}, 0)"}));
    EXPECT_EQ(globalsOf(instance)->sourceData, nullptr) << "it belonged to the former mixer";
    EXPECT_EQ(spy::live(), (Notes{"component1", "mixer2"}));
}

TEST_F(SoundStreamInstance, HasNoMixerAfterARefusal)
{
    open();
    const ComponentInstance instance = openInstance();
    for (int time = 0; time < 2; ++time) {
        spy::answer("OpenMixerSoundComponent").status = -206;
        EXPECT_EQ(send(instance, 1, {0}), -206);
        EXPECT_EQ(globalsOf(instance)->mixer, nullptr) << "the garbage of a refused call is not stored";
        EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(instance));
        spy::answer("OpenMixerSoundComponent").status = noErr;
        EXPECT_EQ(send(instance, 1, {0}), noErr);
    }
    EXPECT_EQ(sendWith(nullptr, 1, {0}), paramErr) << "there is no storage";
}

// ---- sources ----

TEST_F(SoundStreamInstance, ForwardsSourceCallsAndSetsWhetherTheStreamIsActive)
{
    open();
    const ComponentInstance instance = openInstanceWithMixer();
    SoundSource sources[3] = {};
    SoundParamBlock block = {};
    spy::name(sources, "sources");
    spy::name(&block, "block");
    const auto listed = reinterpret_cast<long>(sources), given = reinterpret_cast<long>(&block);
    const long source = 0x1234;
    spy::name(reinterpret_cast<void*>(source), "source");

    enum Becomes { active, inactive, unchanged };
    // clang-format off
    const struct {
        SInt16 selector;
        std::initializer_list<long> words;
        const char* call;
        Becomes becomes;
        const char* why;
    } facts[] = {
        {261, {3, listed},             "SoundComponentStartSource(mixer1, 3, sources)", active, "started"},
        {261, {0, 0},                  "SoundComponentStartSource(mixer1, 0, null)", active, "no source"},
        {261, {0x10003, listed},       "SoundComponentStartSource(mixer1, 3, sources)", active, "the count has 16 bits"},
        {261, {0xFFFF, listed},        "SoundComponentStartSource(mixer1, -1, sources)", active, "the count is signed"},
        {262, {2, listed},             "SoundComponentStopSource(mixer1, 2, sources)", inactive, "stopped"},
        {263, {1, listed},             "SoundComponentPauseSource(mixer1, 1, sources)", inactive, "paused"},
        {264, {source, given, 0},      "SoundComponentPlaySourceBuffer(mixer1, source, block, 0)", active, "played"},
        {264, {source, given, 1},      "SoundComponentPlaySourceBuffer(mixer1, source, block, 1)", unchanged, "only prepared: bit 0 is set"},
        {264, {source, given, 2},      "SoundComponentPlaySourceBuffer(mixer1, source, block, 2)", active, "another bit"},
        {264, {source, given, 0x10000}, "SoundComponentPlaySourceBuffer(mixer1, source, block, 65536)", active, "all bits reach the mixer"},
        {264, {source, given, 0x10001}, "SoundComponentPlaySourceBuffer(mixer1, source, block, 65537)", unchanged, "only prepared: bit 0 is set"},
        {264, {source, given, -1},     "SoundComponentPlaySourceBuffer(mixer1, source, block, -1)", unchanged, "only prepared: every bit is set"},
        {264, {0, 0, -2},              "SoundComponentPlaySourceBuffer(mixer1, null, null, -2)", active, "every bit but bit 0"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const bool before : {false, true})
            for (const OSStatus status : {0, -205, -32768}) {
                SCOPED_TRACE(fact.why);
                object().state()->streamActive = before;
                bool during = !before;
                spy::script().inEachCall = [&](std::size_t) { during = object().isActive(); };
                for (const char* const function :
                     {"SoundComponentStartSource", "SoundComponentStopSource", "SoundComponentPauseSource",
                      "SoundComponentPlaySourceBuffer"})
                    spy::answer(function).status = status;
                EXPECT_EQ(callsOf(instance, fact.selector, fact.words, status), (Notes{fact.call}));
                EXPECT_EQ(during, before) << "the flag changes after the mixer's call";
                EXPECT_EQ(object().isActive(), fact.becomes == unchanged ? before : fact.becomes == active)
                    << "for any status of the mixer: " << status;
            }
}

TEST_F(SoundStreamInstance, ForwardsSourceCallsToNullWithoutAMixer)
{
    open();
    for (const SInt16 selector : {261, 262, 263, 264}) {
        startOver();
        open();
        const ComponentInstance instance = openInstance();
        EXPECT_EQ(callsOf(instance, selector, {0, 0, 0}).at(0).find("null") != std::string::npos, true);
        EXPECT_EQ(object().isActive(), selector == 261 || selector == 264);
        EXPECT_EQ(sendWith(nullptr, selector, {0, 0, 0}), noErr) << "without storage, too";
    }
}

TEST_F(SoundStreamInstance, AnyInstanceMakesTheStreamActive)
{
    open();
    const ComponentInstance first = openInstanceWithMixer(), second = openInstanceWithMixer();
    send(second, 261, {0, 0});
    EXPECT_TRUE(object().isActive());
    send(first, 262, {0, 0});
    EXPECT_FALSE(object().isActive());
    send(first, 264, {0, 0, 0});
    EXPECT_TRUE(object().isActive());
    closeInstance(second);
    EXPECT_FALSE(object().isActive());
}

} // namespace
