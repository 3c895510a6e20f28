// Tests the code that all units share, through a unit kind that only this test has: several inputs,
// parameters of every sort, a bypass.
#include "platform/audiounit/common_properties.h"
#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property_access.h"
#include "platform/audiounit/render.h"
#include "platform/audiounit/source.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using namespace kvxplatform::audiounit;

constexpr AudioUnitPropertyID bypass = 21;

struct State {
    int resets = 0, renewals = 0, initialized = 0;
    OSStatus refusal = noErr;
    Float32 written = 0;
    static int alive;
    State() { ++alive; }
    ~State() { --alive; }
    State(const State&) = delete;
};
int State::alive = 0;

OSStatus openUnit(Unit& unit)
{
    unit.state = new State;
    return noErr;
}
void destroyState(void* state) { delete static_cast<State*>(state); }
OSStatus initializeUnit(Unit& unit)
{
    auto& state = stateOf<State>(unit);
    if (state.refusal) return state.refusal;
    ++state.initialized;
    return noErr;
}
void uninitializeUnit(Unit& unit) { stateOf<State>(unit).initialized = 0; }
void resetUnit(Unit& unit) { ++stateOf<State>(unit).resets; }

OSStatus sumOfInputs(Unit& unit, Slice& slice)
{
    if (unit.isBypassed) return passThrough(unit, slice);
    kvxplatform::pcm::clear(slice.out);
    for (UInt32 bus = 0; bus < unit.inputs().count; ++bus) {
        AudioBufferList* in = nullptr;
        if (const OSStatus status = pull(unit, bus, slice.flags, slice.time, slice.frames, in)) return status;
        const Float32 gain = parameterValue(unit, 0, kAudioUnitScope_Input, bus);
        for (UInt32 i = 0; i < slice.out.mNumberBuffers && i < in->mNumberBuffers; ++i)
            for (UInt32 frame = 0; frame < slice.frames; ++frame)
                static_cast<Float32*>(slice.out.mBuffers[i].mData)[frame] +=
                    gain * static_cast<const Float32*>(in->mBuffers[i].mData)[frame];
    }
    return noErr;
}

OSStatus getMeter(Unit&, const Parameter&, AudioUnitElement element, UInt32 index, Float32& out)
{
    out = -10.0f * static_cast<Float32>(element) - static_cast<Float32>(index);
    return noErr;
}
OSStatus setSpecial(Unit& unit, const Parameter&, AudioUnitElement, UInt32, Float32 value)
{
    stateOf<State>(unit).written = value;
    return value == 3 ? static_cast<OSStatus>(kAudioUnitErr_InvalidParameter) : noErr;
}

// clang-format off
const Property properties[] = {
    {bypass, inGlobal, anyElement, sizeof(UInt32), Access::readWrite, Settable::always, getBypass, setBypass, nullptr},
};
const Parameter parameters[] = {
    {0,    1, kAudioUnitScope_Input,  "gain",    kAudioUnitParameterUnit_LinearGain, 0,    1,  1,  false, nullptr,  nullptr},
    {3000, 2, kAudioUnitScope_Input,  "level",   kAudioUnitParameterUnit_Decibels,   -120, 20, 0,  true,  getMeter, nullptr},
    {10,   3, kAudioUnitScope_Global, "band",    kAudioUnitParameterUnit_Decibels,   -20,  20, 0,  false, nullptr,  nullptr},
    {20,   1, kAudioUnitScope_Global, "special", kAudioUnitParameterUnit_Generic,    0,    9,  5,  false, nullptr,  setSpecial},
    {0,    1, kAudioUnitScope_Output, "gain",    kAudioUnitParameterUnit_LinearGain, 0,    2,  2,  false, nullptr,  nullptr},
};
const UnitKind sums = {'aumx', 'test', "Sum", column::Inputs{{2, 1, 4}}, column::Outputs{{1, 1, 1}}, properties, parameters, InputMemory::ofBus,
                       column::TakesFormat{nullptr}, column::Open{openUnit}, column::Close{nullptr}, column::Destroy{destroyState},
                       column::Initialize{initializeUnit}, column::Uninitialize{uninitializeUnit}, column::Renew{nullptr}, column::Reset{resetUnit},
                       column::Render{sumOfInputs}, column::RenderInside{nullptr}, column::Start{nullptr}, column::Stop{nullptr}};
// clang-format on

/// Render 16 frames of both channels into the unit's own memory. `storage` receives the buffer list.
OSStatus renderInto(Unit& unit, kvxplatform::pcm::ListStorage& storage)
{
    AudioTimeStamp time = {};
    time.mFlags = kAudioTimeStampSampleTimeValid;
    storage.prepare(2);
    AudioBufferList& list = storage.list();
    for (UInt32 i = 0; i < 2; ++i) list.mBuffers[i] = {1, 0, nullptr};
    return render(unit, nullptr, &time, 0, 16, &list);
}

/// Renew the unit, and let a render thread render a slice before the renewal returns.
OSStatus renewUnit(Unit& unit)
{
    ++stateOf<State>(unit).renewals;
    OSStatus status = noErr;
    std::thread([&] {
        kvxplatform::pcm::ListStorage storage;
        status = renderInto(unit, storage);
    }).join();
    return status;
}

const UnitKind renews = [] {
    UnitKind kind = sums;
    kind.renew = column::Renew{renewUnit};
    return kind;
}();

/// A render callback whose every sample is the number of the bus, plus 1/2, plus 1/128 for each preceding
/// channel.
OSStatus steady(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32 bus, UInt32 frames,
                AudioBufferList* list)
{
    if (context) ++*static_cast<int*>(context);
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i)
        for (UInt32 frame = 0; frame < frames; ++frame)
            static_cast<Float32*>(list->mBuffers[i].mData)[frame] =
                static_cast<Float32>(bus) + 0.5f + static_cast<Float32>(i) / 128;
    return noErr;
}

class Base : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(open(sums, reinterpret_cast<AudioUnit>(1), unit), noErr); }
    void TearDown() override
    {
        if (unit) close(*unit);
        unit.reset();
        EXPECT_EQ(State::alive, 0);
    }
    template <class T>
    OSStatus set(AudioUnitPropertyID id, AudioUnitScope scope, AudioUnitElement element, T value)
    {
        return setProperty(*unit, id, {scope, element}, &value, sizeof value);
    }
    template <class T>
    T get(AudioUnitPropertyID id, AudioUnitScope scope, AudioUnitElement element)
    {
        T value{};
        UInt32 size = sizeof value;
        EXPECT_EQ(getProperty(*unit, id, {scope, element}, &value, &size), noErr);
        return value;
    }
    OSStatus setSource(UInt32 bus, int* calls = nullptr)
    {
        return set(kAudioUnitProperty_SetRenderCallback, 1, bus, AURenderCallbackStruct{steady, calls});
    }
    /// Render 16 frames into the unit's own memory.
    OSStatus renderOnce() { return renderInto(*unit, storage); }
    Float32 sample(UInt32 channel)
    {
        return static_cast<Float32*>(storage.list().mBuffers[channel].mData)[15];
    }

    std::unique_ptr<Unit> unit;
    kvxplatform::pcm::ListStorage storage;
};

TEST_F(Base, BusCountVariesWithinLimits)
{
    EXPECT_EQ(get<UInt32>(kAudioUnitProperty_ElementCount, 1, 0), 2u);
    // clang-format off
    const struct { AudioUnitScope scope; UInt32 count; OSStatus status; } facts[] = {
        {1, 1, noErr}, {1, 4, noErr}, {1, 3, noErr},
        {1, 0, kAudioUnitErr_InvalidPropertyValue}, {1, 5, kAudioUnitErr_InvalidPropertyValue},
        {2, 1, noErr}, {2, 2, kAudioUnitErr_PropertyNotWritable}, {0, 2, kAudioUnitErr_PropertyNotWritable},
    };
    // clang-format on
    for (const auto& fact : facts)
        EXPECT_EQ(set<UInt32>(kAudioUnitProperty_ElementCount, fact.scope, 0, fact.count), fact.status)
            << fact.scope << ", " << fact.count;
    EXPECT_EQ(get<UInt32>(kAudioUnitProperty_ElementCount, 1, 0), 3u);
    Float32 value = 0;
    EXPECT_EQ(getParameter(*unit, 0, 1, 2, value), noErr);
    EXPECT_EQ(getParameter(*unit, 0, 1, 3, value), kAudioUnitErr_InvalidElement) << "the present count";
    EXPECT_EQ(setSource(3), kAudioUnitErr_InvalidElement);
    ASSERT_EQ(initialize(*unit), noErr);
    EXPECT_EQ(set<UInt32>(kAudioUnitProperty_ElementCount, 1, 0, 2), kAudioUnitErr_Initialized);
}

TEST_F(Base, ParameterBelongsToScopeAndElement)
{
    // clang-format off
    const struct { AudioUnitParameterID id; AudioUnitScope scope; AudioUnitElement element; OSStatus get, set; Float32 value; const char* why; } facts[] = {
        {0,    1, 0, noErr, noErr, 1, "the first input's gain"},
        {0,    1, 1, noErr, noErr, 1, "the second input's gain"},
        {0,    2, 0, noErr, noErr, 2, "the output's gain is another parameter"},
        {0,    0, 0, kAudioUnitErr_InvalidScope,     kAudioUnitErr_InvalidScope,          0, "no global gain"},
        {10,   0, 0, noErr, noErr, 0, "the first band"},
        {12,   0, 0, noErr, noErr, 0, "the last band"},
        {13,   0, 0, kAudioUnitErr_InvalidParameter, kAudioUnitErr_InvalidParameter,      0, "after the last"},
        {9,    0, 0, kAudioUnitErr_InvalidParameter, kAudioUnitErr_InvalidParameter,      0, "before the first"},
        {3000, 1, 1, noErr, kAudioUnitErr_PropertyNotWritable,                          -10, "a meter is read-only"},
        {3001, 1, 1, noErr, kAudioUnitErr_PropertyNotWritable,                          -11, "the meter of the second channel"},
        {3002, 1, 1, kAudioUnitErr_InvalidParameter, kAudioUnitErr_InvalidParameter,      0, "there are two channels"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        Float32 value = 0;
        EXPECT_EQ(getParameter(*unit, fact.id, fact.scope, fact.element, value), fact.get);
        EXPECT_EQ(value, fact.value);
        EXPECT_EQ(setParameter(*unit, fact.id, fact.scope, fact.element, 0.5f), fact.set);
    }
    Float32 values[3] = {};
    for (UInt32 i = 0; i < 3; ++i)
        ASSERT_EQ(setParameter(*unit, 10 + i, 0, 0, static_cast<Float32>(i) - 30), noErr);
    for (UInt32 i = 0; i < 3; ++i) ASSERT_EQ(getParameter(*unit, 10 + i, 0, 0, values[i]), noErr);
    EXPECT_EQ(values[0], -20);
    EXPECT_EQ(values[2], -20) << "each band keeps its value, in range";
    EXPECT_EQ(setParameter(*unit, 20, 0, 0, 100), noErr);
    EXPECT_EQ(stateOf<State>(*unit).written, 9) << "a row's setter gets the value in range";
    EXPECT_EQ(setParameter(*unit, 20, 0, 0, 3), kAudioUnitErr_InvalidParameter)
        << "a row's setter may refuse";
}

TEST_F(Base, ParameterListAndInfoFollowTheTable)
{
    const std::vector<AudioUnitParameterID> expected[] = {{10, 11, 12, 20}, {0, 3000, 3001}, {0}};
    for (AudioUnitScope scope = 0; scope < 3; ++scope) {
        std::vector<AudioUnitParameterID> list(8);
        UInt32 size = 32;
        ASSERT_EQ(getProperty(*unit, kAudioUnitProperty_ParameterList, {scope, 0}, list.data(), &size),
                  noErr);
        list.resize(size / 4);
        EXPECT_EQ(list, expected[scope]);
    }
    const auto band = get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 0, 11);
    EXPECT_STREQ(band.name, "band 2");
    EXPECT_EQ(band.minValue, -20);
    const auto level = get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 1, 3000);
    EXPECT_EQ(level.flags, kAudioUnitParameterFlag_IsReadable | kAudioUnitParameterFlag_MeterReadOnly);
    EXPECT_EQ(get<AudioUnitParameterInfo>(kAudioUnitProperty_ParameterInfo, 2, 0).maxValue, 2);
}

TEST_F(Base, AcceptsCanonicalFormatsOnly)
{
    const auto canonical = kvxplatform::pcm::canonicalFormat(48000, 5);
    EXPECT_EQ(set(kAudioUnitProperty_StreamFormat, 1, 1, canonical), noErr);
    auto other = canonical;
    other.mFormatFlags = 9;
    other.mBytesPerFrame = other.mBytesPerPacket = 20;
    EXPECT_EQ(set(kAudioUnitProperty_StreamFormat, 1, 1, other), kAudioUnitErr_FormatNotSupported);
    other = canonical;
    other.mBitsPerChannel = 16;
    EXPECT_EQ(set(kAudioUnitProperty_StreamFormat, 1, 1, other), kAudioUnitErr_FormatNotSupported);
    EXPECT_TRUE(kvxplatform::pcm::isSameFormat(
        get<AudioStreamBasicDescription>(kAudioUnitProperty_StreamFormat, 1, 1), canonical));
}

TEST_F(Base, PullsEachBus)
{
    int calls = 0;
    ASSERT_EQ(setSource(0, &calls), noErr);
    ASSERT_EQ(setSource(1, &calls), noErr);
    ASSERT_EQ(initialize(*unit), noErr);
    ASSERT_EQ(renderOnce(), noErr);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(sample(0), 0.5f + 1.5f);
    EXPECT_EQ(sample(1), 0.5f + 1.5f + 2.0f / 128);
    ASSERT_EQ(setParameter(*unit, 0, 1, 1, 0), noErr);
    ASSERT_EQ(renderOnce(), noErr);
    EXPECT_EQ(sample(0), 0.5f) << "a parameter of one bus";
    ASSERT_EQ(setProperty(*unit, kAudioUnitProperty_SetRenderCallback, {1, 1}, nullptr, 0), noErr);
    EXPECT_EQ(renderOnce(), kAudioUnitErr_NoConnection);
}

TEST_F(Base, BypassPassesTheFirstInput)
{
    int calls = 0;
    ASSERT_EQ(setSource(0, &calls), noErr);
    ASSERT_EQ(setSource(1, &calls), noErr);
    EXPECT_EQ(get<UInt32>(bypass, 0, 0), 0u);
    ASSERT_EQ(initialize(*unit), noErr);
    ASSERT_EQ(set<UInt32>(bypass, 0, 0, 77), noErr);
    EXPECT_EQ(get<UInt32>(bypass, 0, 0), 1u);
    ASSERT_EQ(renderOnce(), noErr);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(sample(1), 0.5f + 1.0f / 128);
    ASSERT_EQ(uninitialize(*unit), noErr);
    ASSERT_EQ(set(kAudioUnitProperty_StreamFormat, 1, 0, kvxplatform::pcm::canonicalFormat(44100, 1)), noErr);
    ASSERT_EQ(initialize(*unit), noErr);
    EXPECT_EQ(renderOnce(), kAudioUnitErr_FormatNotSupported) << "one channel is not two";
}

TEST_F(Base, CallsTheKindsFunctionsInOrder)
{
    auto& state = stateOf<State>(*unit);
    state.refusal = kAudioUnitErr_FailedInitialization;
    EXPECT_EQ(initialize(*unit), kAudioUnitErr_FailedInitialization);
    EXPECT_EQ(renderOnce(), kAudioUnitErr_Uninitialized);
    state.refusal = noErr;
    EXPECT_EQ(initialize(*unit), noErr);
    EXPECT_EQ(initialize(*unit), noErr);
    EXPECT_EQ(state.initialized, 1) << "once";
    EXPECT_EQ(reset(*unit, 1, 1), noErr);
    EXPECT_EQ(reset(*unit, 0, 0), noErr);
    EXPECT_EQ(state.resets, 0) << "not outside a slice";
    renderOnce();
    EXPECT_EQ(state.resets, 1) << "before the next slice, once";
    renderOnce();
    EXPECT_EQ(state.resets, 1);
    EXPECT_EQ(uninitialize(*unit), noErr);
    EXPECT_EQ(state.initialized, 0);
    EXPECT_EQ(start(*unit), badComponentSelector) << "not an output unit";
    EXPECT_EQ(stop(*unit), badComponentSelector);
}

/// A render callback that resets the unit that calls it.
OSStatus resetsUnit(void* unit, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                    AudioBufferList*)
{
    return reset(*static_cast<Unit*>(unit), 0, 0);
}

TEST_F(Base, ResetOfARenewedUnitLeavesLaterSlicesUnchanged)
{
    close(*unit);
    ASSERT_EQ(open(renews, reinterpret_cast<AudioUnit>(1), unit), noErr);
    ASSERT_EQ(setSource(0), noErr);
    ASSERT_EQ(setSource(1), noErr);
    ASSERT_EQ(initialize(*unit), noErr);
    const State& state = stateOf<State>(*unit);
    EXPECT_EQ(reset(*unit, 0, 0), noErr);
    EXPECT_EQ(renderOnce(), noErr);
    EXPECT_EQ(state.renewals, 1);
    EXPECT_EQ(state.resets, 0) << "a slice between the renewal and the next one has pulled ahead";

    ASSERT_EQ(set(kAudioUnitProperty_SetRenderCallback, 1, 0, AURenderCallbackStruct{resetsUnit, unit.get()}),
              noErr);
    EXPECT_EQ(renderOnce(), noErr);
    ASSERT_EQ(setSource(0), noErr);
    EXPECT_EQ(renderOnce(), noErr);
    EXPECT_EQ(state.renewals, 1) << "not inside a render call";
    EXPECT_EQ(state.resets, 1);
}

} // namespace
