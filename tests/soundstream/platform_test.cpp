// The component on the real platform. A client finds the component, opens it, sends requests and plays.
#include "soundstream/render.h"
#include "tests/soundstream/classic_client.h"
#include "tests/soundstream/pulled_list.h"
#include "tests/soundstream/stream_object.h"
#include "tests/support/c_library_spy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

namespace {

using namespace soundstream_test;

class SoundStreamPlatform : public testing::Test {
protected:
    SoundStreamPlatform()
    {
        soundComponentEntry = soundStreamDispatcher;
        object_.emplace();
    }
    ~SoundStreamPlatform() override
    {
        client_.reset();
        object_.reset();
        unregisterAll();
        EXPECT_EQ(c_library_spy::liveBlocks(), 0) << "no record stays allocated";
        EXPECT_EQ(alive("Component"), 0u);
        EXPECT_EQ(alive("ComponentInstance"), 0u);
        soundComponentEntry = nullptr;
    }

    StreamObject& object() { return *object_; }
    ClassicClient& client() { return *client_; }

    void open()
    {
        object().initComponent();
        object().openComponent();
        client_.emplace();
        ASSERT_TRUE(client());
    }

    void closeClient() { client_.reset(); }

    /// Render `frames` frames with the calls that an audio unit makes.
    void render(PulledList& pulled, UInt32 frames = 8)
    {
        EXPECT_EQ(soundstream::renderFromMixer(object().state(), nullptr, nullptr, 0, frames, pulled.list()),
                  noErr);
    }

    bool isSilence()
    {
        PulledList pulled(2);
        render(pulled);
        return pulled.isSilent(0) && pulled.isSilent(1);
    }

private:
    std::optional<StreamObject> object_;
    std::optional<ClassicClient> client_;
};

// ---- find and open ----

TEST_F(SoundStreamPlatform, IsFoundByItsDescription)
{
    EXPECT_EQ(findComponent(), nullptr);
    object().initComponent();
    EXPECT_EQ(findComponent(), nullptr);
    object().openComponent();
    EXPECT_EQ(reinterpret_cast<HostInteger>(findComponent()),
              members.get<HostInteger>(object().get(), "SoundOutputComponentHandle"));
    object().openComponent();
    ComponentDescription looking = {'sdev', 0, 0, 0, 0};
    EXPECT_EQ(FindNextComponent(findComponent(), &looking), nullptr) << "registered once";
    object().closeComponent();
    EXPECT_EQ(findComponent(), nullptr);
}

TEST_F(SoundStreamPlatform, CannotBeOpenedInTheDevelopmentEnvironment)
{
    soundComponentEntry = nullptr;
    object().initComponent();
    object().openComponent();
    EXPECT_TRUE(object().isOpen());
    ASSERT_NE(findComponent(), nullptr);
    ComponentInstance instance = nullptr;
    EXPECT_EQ(OpenAComponent(findComponent(), &instance), unresolvedComponentDLLErr);
    EXPECT_EQ(instance, nullptr);
}

TEST_F(SoundStreamPlatform, IsNotOpenedWithoutMemory)
{
    object().initComponent();
    object().openComponent();
    c_library_spy::refuseCalloc(1);
    ComponentInstance instance = nullptr;
    EXPECT_EQ(OpenAComponent(findComponent(), &instance), memFullErr);
    EXPECT_EQ(instance, nullptr);
    EXPECT_EQ(OpenAComponent(findComponent(), &instance), noErr) << "a second attempt";
    EXPECT_EQ(CloseComponent(instance), noErr);
    EXPECT_EQ(CloseComponent(instance), static_cast<OSErr>(badComponentInstance & 0xFFFF));
}

// Silence is written to two buffers whatever the buffer count. The platform's units have memory for a second
// AudioBuffer.
TEST_F(SoundStreamPlatform, SilencesAUnitWithOneBuffer)
{
    object().initComponent();
    const ComponentInstance unit = OpenDefaultComponent('auou', 'genr');
    ASSERT_NE(unit, nullptr);
    const AudioStreamBasicDescription mono = {44100, 'lpcm', 0x29, 4, 1, 4, 1, 32, 0};
    for (const AudioUnitScope scope : {kAudioUnitScope_Input, kAudioUnitScope_Output})
        ASSERT_EQ(AudioUnitSetProperty(unit, kAudioUnitProperty_StreamFormat, scope, 0, &mono, sizeof mono),
                  noErr);
    const auto handle = reinterpret_cast<HostInteger>(unit);
    ASSERT_EQ(object().attach(handle), noErr);
    ASSERT_EQ(object().initialize(handle), noErr);

    float samples[64];
    std::fill(std::begin(samples), std::end(samples), 1.0f);
    AudioBufferList list = {1, {{1, sizeof samples, samples}}};
    AudioUnitRenderActionFlags flags = 0;
    AudioTimeStamp time = {};
    time.mFlags = kAudioTimeStampSampleTimeValid;
    EXPECT_EQ(AudioUnitRender(unit, &flags, &time, 0, 64, &list), noErr);
    for (const float sample : samples) EXPECT_EQ(sample, 0.0f);
    EXPECT_EQ(CloseComponent(unit), noErr);
}

// ---- every selector ----

TEST_F(SoundStreamPlatform, AnswersEverySelector)
{
    open();
    for (int what = -6; what <= 300; ++what) {
        if (what == -2 || what == -1) continue; // other tests send the open and close requests
        SCOPED_TRACE(what);
        SoundSource added = nullptr;
        char value[16] = {};
        const long out = reinterpret_cast<long>(value);
        ComponentResult expected = badComponentSelector;
        std::array<long, 3> words = {0, 0, 0};
        switch (what) {
        case -4:
            expected = 0x00010000;
            break;
        case -3:
            words = {260, 0, 0};
            expected = 1;
            break;
        case 1:
            expected = noErr;
            break;
        case 257: // selector 257 is delegated to the mixer
            words[0] = reinterpret_cast<long>(&added);
            expected = noErr;
            break;
        case 258:
            expected = badChannel;
            break;
        case 259:
            words = {0, 'chan', out};
            expected = noErr;
            break;
        case 260:
            words = {0, 'chan', 2};
            expected = noErr;
            break;
        case 261:
        case 262:
        case 263:
            expected = noErr;
            break;
        case 264:
            expected = paramErr; // the request has no parameter block
            break;
        default:
            break;
        }
        EXPECT_EQ(send(client().instance, static_cast<SInt16>(what), {words[0], words[1], words[2]}),
                  expected);
        if (what == 257) {
            EXPECT_NE(added, nullptr);
        }
        if (what == 259) {
            EXPECT_EQ(value[0], 2);
        }
    }
    EXPECT_EQ(send(client().instance, -2, {reinterpret_cast<long>(client().instance)}), noErr);
    EXPECT_EQ(send(client().instance, -2, {reinterpret_cast<long>(client().instance)}), noErr)
        << "a second close";
    EXPECT_EQ(send(client().instance, 1, {0}), paramErr) << "it has no storage";
    EXPECT_EQ(send(client().instance, 257, {0}), badComponentInstance);
    EXPECT_EQ(send(client().instance, 261, {0, 0}), badComponentInstance);
    EXPECT_EQ(send(client().instance, -1, {reinterpret_cast<long>(client().instance)}), noErr);
    EXPECT_EQ(send(client().instance, 1, {0}), noErr);
}

TEST_F(SoundStreamPlatform, CanDoAnswersByTheTable)
{
    open();
    for (int what = -6; what <= 300; ++what) {
        const bool can = what == -4 || what == -3 || what == -2 || what == -1 || what == 1 || what == 259 ||
                         what == 260 || what == 261 || what == 264;
        EXPECT_EQ(send(client().instance, -3, {what}), can) << what;
    }
}

TEST_F(SoundStreamPlatform, GetsAndSetsInformation)
{
    open();
    UInt32 rate = 0;
    EXPECT_EQ(SoundComponentGetInfo(client().instance, nullptr, siSampleRate, &rate), noErr);
    EXPECT_EQ(rate, 0xAC440000u);
    EXPECT_EQ(SoundComponentSetInfo(client().instance, nullptr, siSampleRate, &rate), noErr);
    rate = 0xBB800000;
    EXPECT_EQ(SoundComponentSetInfo(client().instance, nullptr, siSampleRate, &rate), siInvalidSampleRate);

    const struct {
        OSType code;
        Size bytes;
        UInt32 value;
    } lists[] = {
        {siChannelAvailable, 2, 2}, {siSampleSizeAvailable, 2, 16}, {siSampleRateAvailable, 4, 0xAC440000}};
    for (const auto& fact : lists) {
        SoundInfoList list = {};
        EXPECT_EQ(SoundComponentGetInfo(client().instance, nullptr, fact.code, &list), noErr);
        EXPECT_EQ(list.count, 1);
        ASSERT_EQ(GetHandleSize(list.infoHandle), fact.bytes);
        UInt32 value = 0;
        std::memcpy(&value, *list.infoHandle, static_cast<std::size_t>(fact.bytes));
        EXPECT_EQ(value, fact.value);
        DisposeHandle(list.infoHandle);
    }

    UInt32 volume = 0;
    EXPECT_EQ(SoundComponentGetInfo(client().instance, client().source, siVolume, &volume), noErr)
        << "the mixer answers";
    EXPECT_EQ(volume, 0x01000100u);
    EXPECT_EQ(SoundComponentSetInfo(client().instance, client().source, siVolume,
                                    reinterpret_cast<void*>(0x800080)),
              noErr);
    EXPECT_EQ(SoundComponentGetInfo(client().instance, nullptr, siQuality, &volume), siUnknownInfoType);
}

// ---- output ----

constexpr unsigned char bytes[] = {0x40, 0x00, 0xC0, 0x00, 0x00, 0x01, 0xFF, 0xFF, 0x12, 0x34, 0x80, 0x00};

// The samples that result if `bytes` is read as big-endian and as little-endian samples.
constexpr float bigEndian[2][3] = {{0x4000 / 32768.0f, 1 / 32768.0f, 0x1234 / 32768.0f},
                                   {-0x4000 / 32768.0f, -1 / 32768.0f, -1.0f}};
constexpr float swapped[2][3] = {{0x0040 / 32768.0f, 0x0100 / 32768.0f, 0x3412 / 32768.0f},
                                 {0x00C0 / 32768.0f, -1 / 32768.0f, 0x0080 / 32768.0f}};

TEST_F(SoundStreamPlatform, PlaysBigEndianSamplesThatAreLabelledLittleEndian)
{
    // clang-format off
    const struct { OSType format; const float (&output)[2][3]; const char* why; } facts[] = {
        {'sowt', bigEndian, "the wrong label: the mixer passes the bytes, and they play correctly"},
        {'twos', swapped,   "the right label: the mixer swaps the bytes, and they play swapped"},
        {'NONE', swapped,   "another right label"},
    };
    // clang-format on
    open();
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        SoundParamBlock block = blockOf(bytes, 3, fact.format);
        EXPECT_EQ(client().play(block), noErr);
        EXPECT_TRUE(object().isActive());
        PulledList pulled(2, 3);
        render(pulled, 3);
        for (std::size_t channel = 0; channel < 2; ++channel)
            for (std::size_t frame = 0; frame < 3; ++frame)
                EXPECT_EQ(pulled.sample(channel, frame), fact.output[channel][frame])
                    << channel << ", " << frame;
        EXPECT_TRUE(isSilence()) << "after the last frame";
    }
}

TEST_F(SoundStreamPlatform, PlaysEveryFrameInSlicesOfAnySize)
{
    open();
    constexpr int frames = 5000;
    std::vector<unsigned char> samples;
    for (int i = 0; i < frames; ++i)
        for (const int value : {i, -i - 1}) {
            samples.push_back(static_cast<unsigned char>(value >> 8));
            samples.push_back(static_cast<unsigned char>(value));
        }
    SoundParamBlock block = blockOf(samples.data(), frames);
    EXPECT_EQ(client().play(block, kSourcePaused), noErr);
    EXPECT_FALSE(object().isActive());
    EXPECT_TRUE(isSilence()) << "only prepared";
    EXPECT_EQ(client().start(), noErr);
    int done = 0;
    for (const UInt32 slice : {1, 1023, 1024, 1025, 512, 7, 1400, 8}) {
        PulledList pulled(2, slice);
        render(pulled, slice);
        for (UInt32 i = 0; i < slice; ++i, ++done) {
            ASSERT_EQ(pulled.sample(0, i), static_cast<float>(done) / 32768.0f) << done;
            ASSERT_EQ(pulled.sample(1, i), static_cast<float>(-done - 1) / 32768.0f) << done;
        }
    }
    EXPECT_EQ(done, frames);
    EXPECT_TRUE(isSilence());
}

TEST_F(SoundStreamPlatform, FollowsStartStopAndPause)
{
    open();
    const std::vector<unsigned char> samples(4 * 20000, 0x11);
    SoundParamBlock block = blockOf(samples.data(), 20000), second = block;
    client().play(block);
    EXPECT_FALSE(isSilence());
    EXPECT_TRUE(object().isActive());
    client().pause();
    EXPECT_FALSE(object().isActive());
    // Render the samples that the mixer had delivered before the pause.
    for (int slice = 0; slice < 200; ++slice) isSilence();
    EXPECT_TRUE(isSilence());
    client().start();
    EXPECT_FALSE(isSilence());
    EXPECT_TRUE(object().isActive());
    client().stop();
    EXPECT_FALSE(object().isActive());
    for (int slice = 0; slice < 200; ++slice) isSilence();
    client().start();
    EXPECT_TRUE(isSilence()) << "a stop discards the buffer";
    client().play(second);
    EXPECT_FALSE(isSilence());
}

TEST_F(SoundStreamPlatform, TheInstanceOpenedLastIsAudible)
{
    open();
    const std::vector<unsigned char> quiet(4 * 100, 0x11), loud(4 * 100, 0x22);
    SoundParamBlock first = blockOf(quiet.data(), 100), latest = blockOf(loud.data(), 100);
    client().play(first);
    {
        ClassicClient other;
        other.play(latest);
        PulledList pulled(2);
        render(pulled);
        EXPECT_EQ(pulled.sample(0, 0), 0x2222 / 32768.0f);
    }
    EXPECT_TRUE(isSilence()) << "closing any instance silences the registration";
    EXPECT_EQ(SoundComponentInitOutputDevice(client().instance, 0), noErr);
    EXPECT_TRUE(isSilence());
}

TEST_F(SoundStreamPlatform, RenderingAllocatesNothing)
{
    open();
    const std::vector<unsigned char> samples(4 * 600, 0x11);
    SoundParamBlock block = blockOf(samples.data(), 600);
    const auto renderWithoutAllocation = [&] {
        PulledList pulled(2, 512);
        const c_library_spy::NoAllocation none;
        render(pulled, 512);
    };
    const int before = c_library_spy::alarms();
    client().play(block);
    renderWithoutAllocation();
    renderWithoutAllocation();
    renderWithoutAllocation(); // render after the last frame of the source
    closeClient();
    renderWithoutAllocation();
    object().closeComponent();
    renderWithoutAllocation();
    EXPECT_EQ(c_library_spy::alarms(), before);
}

// ---- instances that outlive their component ----

TEST_F(SoundStreamPlatform, InstancesOutliveTheComponentAndTheObject)
{
    open();
    const std::vector<unsigned char> samples(4 * 100, 0x11);
    SoundParamBlock block = blockOf(samples.data(), 100);
    object().closeComponent();
    EXPECT_FALSE(object().isOpen());
    ASSERT_NE(findComponent(), nullptr) << "the platform keeps a component in use";
    EXPECT_EQ(client().play(block), noErr);
    EXPECT_TRUE(isSilence()) << "the instance is silent";
    {
        ClassicClient late; // an instance of the unregistered component
        EXPECT_TRUE(late);
        EXPECT_EQ(late.start(), noErr);
        EXPECT_TRUE(isSilence());
    }
    object().openComponent();
    EXPECT_TRUE(isSilence());
    object().destroy();
    EXPECT_EQ(client().stop(), noErr);
    EXPECT_EQ(client().play(block), noErr);
    closeClient();
}

// The platform finds a kept, unregistered component before one that was registered later, so a client that
// uses the first match is silent.
TEST_F(SoundStreamPlatform, TheLastMatchIsAudibleAndTheFirstMatchIsAnOrphan)
{
    open();
    object().closeComponent();
    object().openComponent();
    const Component orphan = findFirstComponent(), latest = findComponent();
    ASSERT_NE(orphan, latest);
    EXPECT_EQ(reinterpret_cast<HostInteger>(latest),
              members.get<HostInteger>(object().get(), "SoundOutputComponentHandle"));
    const std::vector<unsigned char> samples(4 * 100, 0x11);
    const struct {
        Component component;
        bool isSilent;
    } facts[] = {{orphan, true}, {latest, false}, {orphan, true}};
    for (const auto& fact : facts) {
        SoundParamBlock block = blockOf(samples.data(), 100);
        ClassicClient late(fact.component);
        ASSERT_TRUE(late);
        EXPECT_EQ(late.play(block), noErr);
        EXPECT_EQ(isSilence(), fact.isSilent);
    }
    closeClient();
    EXPECT_EQ(findFirstComponent(), orphan) << "the platform keeps it, though no instance is open";
}

// ---- completion routines, on the render thread ----

std::function<void()>* completing = nullptr;

Boolean complete(SoundParamBlockPtr*)
{
    (*completing)();
    return false;
}

TEST_F(SoundStreamPlatform, ACompletionRoutineMayCloseInitialiseOrDestroy)
{
    // clang-format off
    const struct { const char* what; std::function<void()> action; } facts[] = {
        {"closes the instance",      [this] { client().close(); }},
        {"initialises it again",     [this] { SoundComponentInitOutputDevice(client().instance, 0); }},
        {"opens another",            [] { ClassicClient another; }},
        {"stops its source",         [this] { client().stop(); }},
        {"closes the component",     [this] { object().closeComponent(); }},
        {"initialises the component", [this] { object().initComponent(); }},
        {"destroys the object",      [this] { object().destroy(); }},
        {"destroys all",             [this] { client().close(); object().destroy(); }},
        {"destroys all, object first", [this] { object().destroy(); client().close(); }},
    };
    // clang-format on
    const std::vector<unsigned char> samples(4 * 4, 0x11);
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.what);
        object().construct();
        open();
        SoundParamBlock block = blockOf(samples.data(), 4);
        block.completionRtn = complete;
        int count = 0;
        std::function<void()> once = [&] {
            if (++count == 1) fact.action();
        };
        completing = &once;
        client().play(block);
        PulledList pulled(2, 64);
        const void* const state = object().state();
        EXPECT_EQ(
            soundstream::renderFromMixer(const_cast<void*>(state), nullptr, nullptr, 0, 64, pulled.list()),
            noErr);
        EXPECT_EQ(count, 1);
        EXPECT_EQ(
            soundstream::renderFromMixer(const_cast<void*>(state), nullptr, nullptr, 0, 64, pulled.list()),
            noErr)
            << "the next slice";
        closeClient();
        object().destroy();
        unregisterAll();
    }
}

// ---- through an audio unit ----

TEST_F(SoundStreamPlatform, PlaysToADeviceOfOneChannel)
{
    KVXSimulatedDevice description = {};
    description.name = "One channel";
    description.outputChannels = 1;
    description.isStepped = 1;
    const KVXDeviceID device = KVXPlatformAddSimulatedDevice(&description);
    ASSERT_EQ(KVXPlatformChooseOutputDevice("One channel"), 0);
    object().initComponent();
    object().openComponent();
    const HostInteger unit = object().openUnit();
    ASSERT_NE(unit, 0);
    const AudioUnit opened = reinterpret_cast<AudioUnit>(unit);
    AudioStreamBasicDescription format = object().state()->outputFormat;
    format.mChannelsPerFrame = 1;
    EXPECT_EQ(AudioUnitSetProperty(opened, kAudioUnitProperty_StreamFormat, kAudioUnitScope_Input, 0, &format,
                                   sizeof format),
              noErr);
    EXPECT_EQ(object().attach(unit), noErr);
    EXPECT_EQ(object().initialize(unit), noErr);
    EXPECT_EQ(object().start(unit), noErr);
    EXPECT_EQ(KVXPlatformStep(device, 1024), 1024u) << "silence for two buffers, in a list of one";
    object().closeComponent();
    EXPECT_EQ(CloseComponent(opened), noErr);
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
}

TEST_F(SoundStreamPlatform, AUnitMayOutliveItsState)
{
    KVXSimulatedDevice description = {};
    description.name = "Stepped";
    description.isStepped = 1;
    const KVXDeviceID device = KVXPlatformAddSimulatedDevice(&description);
    ASSERT_EQ(KVXPlatformChooseOutputDevice("Stepped"), 0);
    open();
    const HostInteger first = object().openUnit(), second = object().openUnit();
    for (const HostInteger unit : {first, second}) {
        EXPECT_EQ(object().attach(unit), noErr);
        EXPECT_EQ(object().initialize(unit), noErr);
        EXPECT_EQ(object().start(unit), noErr);
    }
    EXPECT_EQ(KVXPlatformStep(device, 2048), 2048u);
    object().initComponent(); // InitComponent stops the second unit only
    EXPECT_EQ(KVXPlatformStep(device, 2048), 2048u);
    EXPECT_EQ(object().start(second), noErr);
    EXPECT_EQ(KVXPlatformStep(device, 2048), 2048u);
    object().destroy();
    closeClient();
    EXPECT_EQ(KVXPlatformStep(device, 2048), 2048u);
    for (const HostInteger unit : {first, second})
        EXPECT_EQ(CloseComponent(reinterpret_cast<ComponentInstance>(unit)), noErr);
    EXPECT_EQ(KVXPlatformRemoveSimulatedDevice(device), 0);
}

} // namespace
