// Tests rendering through the generic output unit: buffer lists, limits, times, formats, errors.
#include "tests/platform/audiounit/fed_unit.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using namespace test;

/// An initialised generic output unit that is fed with noise in format `in` and has output in format `out`.
struct Fed : FedUnit {
    Fed(const AudioStreamBasicDescription& in, const AudioStreamBasicDescription& out, UInt32 limit = 1156)
        : FedUnit('genr', 'auou', in, out, limit)
    {
        EXPECT_EQ(AudioUnitInitialize(unit), noErr);
    }
};

/// Expect noise that begins at frame `at`, with source channel n in channel n.
void expectNoise(const AudioStreamBasicDescription& format, List& list, UInt32 frames, Float64 at,
                 UInt32 sourceChannels, const std::string& what)
{
    SCOPED_TRACE(what);
    test::expectNoise(format, list, frames, at, sourceChannels, [](UInt32 channel, UInt32 sources) {
        return channel < sources ? static_cast<int>(channel) : -1;
    });
}

// clang-format off
const struct { UInt32 bits, flags, bytes; const char* name; } layouts[] = {
    {32, isFloat | isPacked,                    4, "float"},
    {32, isFloat | isPacked | isNonInterleaved,          4, "float, non-interleaved"},
    {32, isFloat | isPacked | isBig,            4, "float, big-endian"},
    {64, isFloat | isPacked,                    8, "double"},
    {64, isFloat | isPacked | isBig | isNonInterleaved,  8, "double, big-endian, non-interleaved"},
    {8,  isSigned | isPacked,                   1, "8 bits"},
    {8,  isPacked,                              1, "8 bits unsigned"},
    {16, isSigned | isPacked,                   2, "16 bits"},
    {16, isSigned | isPacked | isBig,           2, "16 bits, big-endian"},
    {16, isSigned | isPacked | isNonInterleaved,         2, "16 bits, non-interleaved"},
    {16, isPacked | isBig,                      2, "16 bits unsigned, big-endian"},
    {24, isSigned | isPacked,                   3, "24 bits"},
    {24, isSigned | isPacked | isBig,           3, "24 bits, big-endian"},
    {24, isSigned | isPacked | isBig | isNonInterleaved, 3, "24 bits, big-endian, non-interleaved"},
    {24, isSigned,                              4, "24 bits low in 32"},
    {24, isSigned | isHigh,                     4, "24 bits high in 32"},
    {20, isSigned | isHigh | isBig,             3, "20 bits high in 24, big-endian"},
    {32, isSigned | isPacked,                   4, "32 bits"},
    {32, isSigned | isPacked | isBig,           4, "32 bits, big-endian"},
    {32, isPacked | isNonInterleaved,                    4, "32 bits unsigned, non-interleaved"},
};
// clang-format on

TEST(GenericOutput, ConvertsEveryFormatToEveryOther)
{
    for (const auto& from : layouts)
        for (const auto& to : layouts) {
            const std::string what = std::string(from.name) + " to " + to.name;
            const auto in = pcm(48000, 2, from.bits, from.flags, from.bytes);
            const auto out = pcm(48000, 2, to.bits, to.flags, to.bytes);
            Fed fed(in, out);
            List list(out, 100);
            ASSERT_EQ(fed.render(list, 100, 1000), noErr) << what;
            expectNoise(out, list, 100, 1000, 2, what);
            if (HasFatalFailure()) return;
        }
}

TEST(GenericOutput, CopiesCommonChannelsAndSilencesTheRest)
{
    for (const UInt32 in : {1, 2, 6})
        for (const UInt32 out : {1, 2, 6, 8}) {
            Fed fed(interleaved(44100, in), canonical(44100, out));
            List list(fed.format, 64);
            ASSERT_EQ(fed.render(list, 64), noErr);
            expectNoise(fed.format, list, 64, 0, in, std::to_string(in) + " to " + std::to_string(out));
        }
}

TEST(GenericOutput, CallbackGetsTheCallersSliceInOneCall)
{
    Fed fed(pcm(44100, 2, 16, isSigned | isPacked), canonical(44100, 2));
    List list(fed.format, 300);
    AudioUnitRenderActionFlags flags = kAudioOfflineUnitRenderAction_Render;
    ASSERT_EQ(fed.render(list, 300, 5000, &flags), noErr);
    ASSERT_EQ(fed.feeder.requests.size(), 1u);
    const Request& request = fed.feeder.requests[0];
    EXPECT_EQ(request.bus, 0u);
    EXPECT_EQ(request.frames, 300u);
    EXPECT_EQ(request.time.mSampleTime, 5000);
    EXPECT_TRUE(request.time.mFlags & kAudioTimeStampSampleTimeValid);
    EXPECT_EQ(request.flags, UInt32{kAudioOfflineUnitRenderAction_Render})
        << "the caller's flags, without a render phase";
    EXPECT_EQ(request.buffers, 1u) << "interleaved, as the input's format";
    EXPECT_EQ(request.channels, 2u);
    EXPECT_EQ(request.bytes, 1200u);
    EXPECT_EQ(flags, UInt32{kAudioOfflineUnitRenderAction_Render});
}

TEST(GenericOutput, RendersIntoTheCallersMemoryOrItsOwn)
{
    Fed fed(canonical(44100, 2), canonical(44100, 2));
    List list(fed.format, 200);
    ASSERT_EQ(fed.render(list, 150), noErr);
    EXPECT_EQ(list[0].mDataByteSize, 600u) << "set to the bytes that were rendered";
    EXPECT_EQ(list[1].mDataByteSize, 600u);
    expectNoise(fed.format, list, 150, 0, 2, "the caller's memory");
    EXPECT_EQ(list.bytes(0)[600], 0xEE) << "nothing is written after the slice";

    list.clearPointers();
    ASSERT_EQ(fed.render(list, 1156, 7), noErr);
    ASSERT_NE(list[0].mData, nullptr);
    ASSERT_NE(list[1].mData, nullptr);
    EXPECT_NE(list[0].mData, list[1].mData);
    EXPECT_EQ(list[0].mDataByteSize, 1156u * 4);
    expectNoise(fed.format, list, 1156, 7, 2, "the unit's memory");

    list.restore();
    list[0].mData = nullptr;
    ASSERT_EQ(fed.render(list, 100, 9), noErr);
    EXPECT_EQ(list[1].mData, list.bytes(1));
    expectNoise(fed.format, list, 100, 9, 2, "one buffer of each");
}

TEST(GenericOutput, ChecksEverySlice)
{
    Fed fed(canonical(44100, 2), canonical(44100, 2), 512);
    List fits(fed.format, 512), one(canonical(44100, 1), 512), three(canonical(44100, 3), 512),
        mixed(interleaved(44100, 2), 512), small(fed.format, 511);
    AudioTimeStamp good = sampleTime(0), bad = {};
    bad.mFlags = kAudioTimeStampHostTimeValid;
    // clang-format off
    const struct { const AudioTimeStamp* time; UInt32 bus, frames; List* list; OSStatus status; const char* why; } facts[] = {
        {&good,   0, 512, &fits,   noErr,                                  "as large as the limit"},
        {&good,   0, 0,   &fits,   noErr,                                  "no frames"},
        {&good,   0, 1,   &fits,   noErr,                                  "one frame"},
        {&good,   0, 513, &fits,   kAudioUnitErr_TooManyFramesToProcess,   "beyond the limit"},
        {&good,   0, 0xFFFFFFFF, &fits, kAudioUnitErr_TooManyFramesToProcess, "far beyond the limit"},
        {&good,   1, 512, &fits,   kAudioUnitErr_InvalidElement,           "no such bus"},
        {nullptr, 0, 512, &fits,   paramErr,                               "no time"},
        {&bad,    0, 512, &fits,   paramErr,                               "no sample time"},
        {&good,   0, 512, nullptr, paramErr,                               "no list"},
        {&good,   0, 512, &one,    paramErr,                               "too few buffers"},
        {&good,   0, 512, &three,  paramErr,                               "too many buffers"},
        {&good,   0, 512, &mixed,  paramErr,                               "one buffer of two channels"},
        {&good,   0, 512, &small,  paramErr,                               "buffers too small by a frame"},
        {&good,   0, 511, &small,  noErr,                                  "buffers just large enough"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        for (List* list : {&fits, &one, &three, &mixed, &small}) list->restore();
        const int before = fed.feeder.calls;
        EXPECT_EQ(AudioUnitRender(fed.unit, nullptr, fact.time, fact.bus, fact.frames,
                                  fact.list ? fact.list->get() : nullptr),
                  fact.status);
        EXPECT_EQ(fed.feeder.calls - before, fact.status == noErr && fact.frames ? 1 : 0)
            << "a refused slice does not call the source";
    }
}

TEST(GenericOutput, KeepsTheErrorOfAFailedSlice)
{
    Unit unit('genr');
    List list(canonical(44100, 2), 64);
    const AudioTimeStamp time = sampleTime(0);
    const auto lastError = [&] { return unit.get<OSStatus>(kAudioUnitProperty_LastRenderError, 0, 0); };
    const auto render = [&] {
        list.restore();
        return AudioUnitRender(unit, nullptr, &time, 0, 64, list.get());
    };

    EXPECT_EQ(render(), kAudioUnitErr_Uninitialized);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(lastError(), noErr);
    EXPECT_EQ(render(), kAudioUnitErr_NoConnection) << "no source";
    for (unsigned i = 0; i < 64 * 4; ++i) ASSERT_EQ(list.bytes(0)[i], 0) << "silent, not former samples";
    EXPECT_EQ(lastError(), kAudioUnitErr_NoConnection);
    EXPECT_EQ(lastError(), noErr) << "returned once";

    Feeder feeder(canonical(44100, 2));
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    EXPECT_EQ(render(), noErr) << "a callback can be set at any time";
    feeder.status = -1234;
    EXPECT_EQ(render(), -1234) << "the callback's error is returned";
    for (unsigned i = 0; i < 64 * 4; ++i) ASSERT_EQ(list.bytes(1)[i], 0);
    feeder.status = noErr;
    EXPECT_EQ(render(), noErr);
    EXPECT_EQ(lastError(), -1234) << "kept until it is read";
    EXPECT_EQ(lastError(), noErr);
    EXPECT_EQ(render(), noErr);
    EXPECT_EQ(lastError(), noErr);

    ASSERT_EQ(AudioUnitSetProperty(unit, kAudioUnitProperty_SetRenderCallback, 1, 0, nullptr, 0), noErr);
    EXPECT_EQ(render(), kAudioUnitErr_NoConnection) << "removed";
    ASSERT_EQ(unit.setCallback(Feeder::callback, &feeder), noErr);
    ASSERT_EQ(unit.setCallback(nullptr, nullptr), noErr);
    EXPECT_EQ(render(), kAudioUnitErr_NoConnection) << "a null procedure removes the callback";
    ASSERT_EQ(AudioUnitUninitialize(unit), noErr);
    EXPECT_EQ(render(), kAudioUnitErr_Uninitialized);
}

/// A render callback that changes its buffer list in one of several ways.
struct ListChanger {
    enum { shortens, setsPointer, clearsPointer, setsPointerAndShortens } way;
    float ownSamples[64];
};

OSStatus changeList(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32 frames,
                    AudioBufferList* list)
{
    ListChanger& changer = *static_cast<ListChanger*>(context);
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i) {
        AudioBuffer& buffer = list->mBuffers[i];
        for (UInt32 frame = 0; frame < frames; ++frame) static_cast<float*>(buffer.mData)[frame] = 0.25f;
        if (changer.way == ListChanger::clearsPointer) buffer.mData = nullptr;
        if (changer.way == ListChanger::shortens || changer.way == ListChanger::setsPointerAndShortens)
            buffer.mDataByteSize = 10 * 4;
        if (changer.way == ListChanger::setsPointer || changer.way == ListChanger::setsPointerAndShortens)
            buffer.mData = changer.ownSamples;
    }
    return noErr;
}

TEST(GenericOutput, AcceptsAChangedCallbackList)
{
    Unit unit('genr');
    ListChanger changer = {};
    for (float& sample : changer.ownSamples) sample = 0.75f;
    ASSERT_EQ(unit.setCallback(changeList, &changer), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    // clang-format off
    const struct { decltype(ListChanger::way) way; float first, last; const char* why; } facts[] = {
        {ListChanger::shortens,             0.25f, 0.0f,  "fewer bytes: the rest is silence"},
        {ListChanger::setsPointer,      0.75f, 0.75f, "the callback's memory is read"},
        {ListChanger::clearsPointer,                0.0f,  0.0f,  "no memory: silence"},
        {ListChanger::setsPointerAndShortens, 0.75f, 0.0f,  "the callback's memory, as many bytes as stated"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        changer.way = fact.way;
        List list(canonical(44100, 2), 64);
        const AudioTimeStamp time = sampleTime(0);
        ASSERT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 64, list.get()), noErr) << fact.why;
        const float* samples = static_cast<const float*>(list[1].mData);
        EXPECT_EQ(samples[0], fact.first) << fact.why;
        EXPECT_EQ(samples[9], fact.first) << fact.why;
        EXPECT_EQ(samples[63], fact.last) << fact.why;
    }
}

OSStatus rendersItself(void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time, UInt32,
                       UInt32 frames, AudioBufferList* list)
{
    auto& unit = *static_cast<Unit*>(context);
    EXPECT_EQ(AudioUnitRender(unit, flags, time, 0, frames, list), kAudioUnitErr_CannotDoInCurrentContext);
    EXPECT_EQ(AudioUnitUninitialize(unit), kAudioUnitErr_CannotDoInCurrentContext);
    EXPECT_EQ(AudioUnitInitialize(unit), noErr) << "already initialised";
    EXPECT_EQ(unit.setLimit(64), kAudioUnitErr_Initialized);
    return -77;
}

TEST(GenericOutput, RefusesARecursiveSlice)
{
    Unit unit('genr');
    ASSERT_EQ(unit.setCallback(rendersItself, &unit), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    List list(canonical(44100, 2), 64);
    const AudioTimeStamp time = sampleTime(0);
    EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 64, list.get()), -77);
}

OSStatus closesItsUnit(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                       AudioBufferList* list)
{
    auto& unit = *static_cast<Unit*>(context);
    const AudioUnit handle = unit;
    EXPECT_EQ(unit.close(), noErr);
    EXPECT_EQ(AudioUnitReset(handle, 0, 0), badComponentInstance);
    // Writes to the unit's memory, which must not have been freed yet.
    std::memset(list->mBuffers[0].mData, 0, list->mBuffers[0].mDataByteSize);
    return noErr;
}

TEST(GenericOutput, FinishesASliceInWhichItIsClosed)
{
    Unit unit('genr');
    ASSERT_EQ(unit.setCallback(closesItsUnit, &unit), noErr);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    List list(canonical(44100, 2), 64);
    const AudioTimeStamp time = sampleTime(0);
    EXPECT_EQ(AudioUnitRender(unit, nullptr, &time, 0, 64, list.get()), noErr);
}

TEST(GenericOutput, StartsAndStopsWithoutADevice)
{
    Unit unit('genr');
    EXPECT_EQ(AudioOutputUnitStart(unit), kAudioUnitErr_Uninitialized);
    ASSERT_EQ(AudioUnitInitialize(unit), noErr);
    EXPECT_EQ(unit.get<UInt32>(kAudioOutputUnitProperty_IsRunning, 0, 0), 0u);
    EXPECT_EQ(AudioOutputUnitStart(unit), noErr);
    EXPECT_EQ(unit.get<UInt32>(kAudioOutputUnitProperty_IsRunning, 0, 0), 1u);
    EXPECT_EQ(AudioOutputUnitStop(unit), noErr);
    EXPECT_EQ(unit.get<UInt32>(kAudioOutputUnitProperty_IsRunning, 0, 0), 0u);
}

} // namespace
