// The render procedure: silence if no instance is audible, else the mixer's samples through the converter.
#include "tests/soundstream/pulled_list.h"
#include "tests/soundstream/stream_fixture.h"

#include <cstring>

namespace {

using namespace soundstream_test;

class SoundStreamRender : public StreamTest {
protected:
    SoundStreamRender()
    {
        open();
        object().attach(unit());
        callback_ = sound_spy::callback();
        spy::forgetCalls();
    }

    OSStatus render(AudioBufferList* list, UInt32 frames = 8)
    {
        AudioUnitRenderActionFlags flags = 0;
        const AudioTimeStamp time = {};
        return callback_.inputProc(callback_.inputProcRefCon, &flags, &time, 0, frames, list);
    }

    void expectSilence(const char* why)
    {
        SCOPED_TRACE(why);
        spy::forgetCalls();
        PulledList pulled(2);
        EXPECT_EQ(render(pulled.list()), noErr);
        EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1));
        EXPECT_EQ(spy::calls(), Notes());
    }

private:
    AURenderCallbackStruct callback_;
};

// ---- silence ----

TEST_F(SoundStreamRender, SilencesTheFirstTwoBuffersOfTheList)
{
    for (UInt32 count = 0; count <= 3; ++count) {
        SCOPED_TRACE(count);
        PulledList pulled(count); // the list has three AudioBuffer structures, whatever the count
        pulled.buffer(0).mDataByteSize = 12;
        pulled.buffer(1).mDataByteSize = 28;
        EXPECT_EQ(render(pulled.list(), 1), noErr);
        EXPECT_TRUE(pulled.isSilentFor(0, 12)) << "its byte size, not the requested frames";
        EXPECT_TRUE(pulled.isSilentFor(1, 28)) << "each buffer by its own byte size";
        EXPECT_TRUE(pulled.isUntouched(2));
        EXPECT_EQ(pulled.list()->mNumberBuffers, count);
        EXPECT_EQ(pulled.buffer(0).mDataByteSize, 12u);
        EXPECT_EQ(pulled.buffer(1).mDataByteSize, 28u);
    }
    EXPECT_EQ(spy::calls(), Notes());
}

TEST_F(SoundStreamRender, SilenceSkipsBuffersWithoutMemory)
{
    for (std::size_t absent = 0; absent < 2; ++absent) {
        PulledList pulled(2);
        pulled.buffer(absent).mData = nullptr;
        EXPECT_EQ(render(pulled.list()), noErr);
        EXPECT_TRUE(pulled.isUntouched(absent));
        EXPECT_TRUE(pulled.isSilent(1 - absent));
    }
    PulledList pulled(2);
    pulled.buffer(0).mDataByteSize = 0;
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_TRUE(pulled.isUntouched(0));
}

TEST_F(SoundStreamRender, RendersSilenceInEveryStateWithoutAnOpenInstance)
{
    expectSilence("open, without a client");
    const ComponentInstance instance = openInstanceWithMixer();
    closeInstance(instance);
    expectSilence("the client has closed its instance");
    const ComponentInstance another = openInstanceWithMixer();
    object().closeComponent();
    expectSilence("the host program has closed the component");
    closeInstance(another);
    object().openComponent();
    expectSilence("opened again");
    object().initComponent();
    expectSilence("initialised again");
    object().destroy();
    expectSilence("destroyed, while the unit keeps its callback");
}

TEST_F(SoundStreamRender, RendersSilenceForAFreedState)
{
    char anything = 0;
    PulledList pulled(2);
    AudioUnitRenderActionFlags flags = 0;
    const AudioTimeStamp time = {};
    for (void* const state : {static_cast<void*>(nullptr), static_cast<void*>(&anything)})
        EXPECT_EQ(sound_spy::callback().inputProc(state, &flags, &time, 0, 8, pulled.list()), noErr);
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1));
}

// ---- through the converter ----

TEST_F(SoundStreamRender, CallsTheConverterAndIgnoresItsStatus)
{
    openInstance();
    PulledList pulled(2);
    spy::name(pulled.list(), "list");
    for (const OSStatus status : {0, -50, 0x6F703F3F}) {
        spy::forgetCalls();
        spy::answer("AudioConverterFillComplexBuffer").status = status;
        EXPECT_EQ(render(pulled.list(), 512), noErr);
        EXPECT_EQ(spy::calls(), (Notes{"AudioConverterFillComplexBuffer(converter1, giveMixerSamples, "
                                       "storage1, 512, list, null)"}));
        for (std::size_t i = 0; i < PulledList::capacity; ++i) EXPECT_TRUE(pulled.isUntouched(i));
    }
}

TEST_F(SoundStreamRender, PassesNullWithoutAConverter)
{
    startOver();
    spy::answer("AudioConverterNew").status = -108;
    open();
    object().attach(unit());
    openInstance();
    PulledList pulled(2);
    EXPECT_EQ(sound_spy::callback().inputProc(object().state(), nullptr, nullptr, 0, 8, pulled.list()),
              noErr);
    EXPECT_EQ(spy::calls().back().substr(0, 36), "AudioConverterFillComplexBuffer(null");
}

TEST_F(SoundStreamRender, RendersSilenceWhenTheConverterThrows)
{
    const ComponentInstance instance = openInstance();
    PulledList pulled(2);
    spy::answer("AudioConverterFillComplexBuffer").during = [] { throw Thrown(); };
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1) && pulled.isUntouched(2));
    spy::answer("AudioConverterFillComplexBuffer").during = nullptr;
    spy::forgetCalls();
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_EQ(spy::calls().size(), 1u) << "the next slice is rendered";
    closeInstance(instance); // the close does not wait, because the failed render call has ended
}

// ---- the converter's input ----

class SoundStreamInput : public SoundStreamRender {
protected:
    /// Call the converter's input procedure once, as the converter does.
    OSStatus give(UInt32& packets, AudioBufferList* input)
    {
        OSStatus status = -1;
        sound_spy::platform().fill = [&](const sound_spy::Filling& filling) {
            status = filling.input(filling.converter, &packets, input, nullptr, filling.client);
            return noErr;
        };
        PulledList pulled(2);
        spy::forgetCalls();
        EXPECT_EQ(render(pulled.list()), noErr);
        return status;
    }

    /// Whether the last give() call requested samples from the mixer.
    static bool hasRequested() { return spy::calls().size() > 1; }
};

TEST_F(SoundStreamInput, GivesTheMixersSamplesInPlace)
{
    constexpr long none = -1, kept = -2;
    // clang-format off
    const struct {
        long current; // frames left in the current data; none: no current data
        // Frames in the mixer's next data; none: null; kept: the mixer leaves the pointer unchanged.
        long next;
        UInt32 requested; // packets that the converter requests
        bool requests; // whether the input procedure requests data of the mixer
        long given; // frames that the converter receives; none: silence and an unchanged packet count
        long left; // frames left in the current data after the call; none: no current data
        const char* why;
    } facts[] = {
        {none, none,    16,  true,  none, none,  "no source plays"},
        {none, kept,    16,  true,  none, none,  "no source plays, and the mixer does not answer"},
        {none, 0,       16,  true,  none, 0,     "an empty record"},
        {none, 100,     16,  true,  16,   84,    "the first"},
        {none, 10,      16,  true,  10,   0,     "fewer than requested"},
        {0,    none,    16,  true,  none, none,  "used up, and no next data"},
        {0,    kept,    16,  true,  none, 0,     "used up, and the mixer does not answer"},
        {0,    0,       16,  true,  none, 0,     "used up, and an empty record"},
        {0,    100,     40,  true,  40,   60,    "used up, and next data"},
        {100,  none,    40,  false, 40,   60,    "current data first"},
        {100,  none,    99,  false, 99,   1,     "all but one"},
        {100,  none,    100, false, 100,  0,     "all"},
        {100,  50,      101, false, 100,  0,     "all; the next data follows in the next call"},
        {100,  none,    ~UInt32{0}, false, 100, 0, "all, for the largest request"},
        {1,    none,    1,   false, 1,    0,     "one"},
        {100,  none,    0,   false, none, 100,   "none requested"},
        {0,    100,     0,   true,  none, 100,   "none requested: the next data is fetched anyway"},
        {none, none,    0,   true,  none, none,  "none requested, and no data"},
        {-5,   100,     16,  false, none, -5,    "a negative count"},
        {0,    -5,      16,  true,  none, -5,    "a negative count of the next data"},
    };
    // clang-format on
    const ComponentInstance instance = openInstanceWithMixer();
    for (const auto& fact : facts)
        for (const OSStatus status : {0, -205}) {
            SCOPED_TRACE(fact.why);
            Byte samples[1024];
            const auto record = [&](long frames) {
                return SoundComponentData{7, 'sowt', 2, 16, 0xAC440000, frames, samples, 9};
            };
            SoundComponentData current = record(fact.current), next = record(fact.next);
            current.buffer += 512;
            auto& globals = *globalsOf(instance);
            globals.sourceData = fact.current == none ? nullptr : &current;
            spy::name(globals.sourceData, "current data");
            sound_spy::platform().nextData = [&](SoundComponentDataPtr* data) {
                if (fact.next != kept) *data = fact.next == none ? nullptr : &next;
            };
            // The sound bridge ignores this status.
            spy::answer("SoundComponentGetSourceData").status = status;

            PulledList input(1);
            input.buffer(0).mNumberChannels = 7;
            UInt32 packets = fact.requested;
            EXPECT_EQ(give(packets, input.list()), noErr);
            EXPECT_EQ(hasRequested(), fact.requests);
            if (fact.requests) {
                EXPECT_EQ(spy::calls()[1], fact.current == none
                                               ? "SoundComponentGetSourceData(mixer1, null)"
                                               : "SoundComponentGetSourceData(mixer1, current data)");
            }
            const bool usesNext = fact.requests && fact.next != kept;
            const SoundComponentData& played = usesNext ? next : current;
            EXPECT_EQ(globals.sourceData, fact.left == none ? nullptr : &played);
            if (fact.given == none) {
                EXPECT_EQ(packets, fact.requested);
                EXPECT_TRUE(input.isSilent(0));
                EXPECT_EQ(input.buffer(0).mNumberChannels, 7u);
                EXPECT_EQ(input.buffer(0).mDataByteSize, 32u);
            } else {
                EXPECT_EQ(packets, static_cast<UInt32>(fact.given));
                EXPECT_EQ(input.buffer(0).mData, samples + (usesNext ? 0 : 512)) << "in place, not copied";
                EXPECT_EQ(input.buffer(0).mNumberChannels, 2u);
                EXPECT_EQ(input.buffer(0).mDataByteSize, static_cast<UInt32>(fact.given * 4));
                EXPECT_EQ(played.buffer, samples + (usesNext ? 0 : 512) + fact.given * 4);
                EXPECT_TRUE(input.isUntouched(0));
            }
            EXPECT_TRUE(input.isUntouched(1));
            if (fact.left != none) {
                SoundComponentData expected = record(fact.left);
                expected.buffer = played.buffer;
                EXPECT_EQ(std::memcmp(&played, &expected, sizeof expected), 0)
                    << "only count and buffer change";
            }
        }
    globalsOf(instance)->sourceData = nullptr;
}

TEST_F(SoundStreamInput, DrainsARecordSliceBySlice)
{
    openInstanceWithMixer();
    Byte samples[400];
    SoundComponentData data = {0, 'sowt', 2, 16, 0xAC440000, 100, samples, 0};
    int requests = 0;
    sound_spy::platform().nextData = [&](SoundComponentDataPtr* out) {
        *out = &data;
        data.sampleCount = 100;
        data.buffer = samples;
        ++requests;
    };
    const struct {
        std::ptrdiff_t first;
        UInt32 count;
        int requests;
    } facts[] = {{0, 32, 1}, {32, 32, 1}, {64, 32, 1}, {96, 4, 1}, {0, 32, 2}, {32, 32, 2}};
    for (const auto& fact : facts) {
        PulledList input(1);
        UInt32 packets = 32;
        EXPECT_EQ(give(packets, input.list()), noErr);
        EXPECT_EQ(static_cast<Byte*>(input.buffer(0).mData), samples + fact.first * 4);
        EXPECT_EQ(packets, fact.count);
        EXPECT_EQ(requests, fact.requests);
    }
}

TEST_F(SoundStreamInput, IsSilenceWithoutAMixer)
{
    openInstance();
    PulledList input(1);
    UInt32 packets = 64;
    spy::answer("SoundComponentGetSourceData").status = badComponentInstance;
    EXPECT_EQ(give(packets, input.list()), noErr);
    EXPECT_EQ(spy::calls()[1], "SoundComponentGetSourceData(null, null)");
    EXPECT_EQ(packets, 64u);
    EXPECT_TRUE(input.isSilent(0));
    input.buffer(0).mData = nullptr;
    EXPECT_EQ(give(packets, input.list()), noErr) << "also without memory";
}

TEST_F(SoundStreamInput, IsSilenceWhenTheMixerThrows)
{
    openInstanceWithMixer();
    PulledList input(1);
    UInt32 packets = 64;
    spy::answer("SoundComponentGetSourceData").during = [] { throw Thrown(); };
    EXPECT_EQ(give(packets, input.list()), noErr);
    EXPECT_EQ(packets, 64u);
    EXPECT_TRUE(input.isSilent(0));
}

} // namespace
