// Making and disposing of converters, live-object counts, misuse.
#include "tests/platform/audioconverter/converter.h"

#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace {

using namespace test;

AudioStreamBasicDescription format() { return interleaved(44100, 1); }

UInt32 alive()
{
    KVXLiveCount rows[32];
    const UInt32 count = KVXPlatformGetLiveCounts(rows, 32);
    for (UInt32 i = 0; i < count; ++i)
        if (!std::strcmp(rows[i].kind, "AudioConverter")) return rows[i].count;
    return 0;
}

TEST(Lifetime, LiveConvertersAreCounted)
{
    const UInt32 before = alive();
    {
        const Converter first(format(), format()), second(format(), format());
        EXPECT_EQ(alive(), before + 2);
    }
    EXPECT_EQ(alive(), before);
    auto wrong = format();
    wrong.mFormatID = 'aac ';
    const Converter refused(wrong, format());
    EXPECT_EQ(alive(), before);
    // A converter that is never disposed stays in the live-object count.
    EXPECT_NE(Converter(format(), format()).release(), nullptr);
    EXPECT_EQ(alive(), before + 1);
}

TEST(Lifetime, DisposedHandlesAreRefused)
{
    Converter converter(format(), format());
    const AudioConverterRef stale = converter.release();
    ASSERT_EQ(AudioConverterDispose(stale), noErr);
    const Converter next(format(), format());
    UInt32 size = 4, word = 0;
    Boolean writable = 0;
    for (const AudioConverterRef handle :
         {stale, AudioConverterRef{}, reinterpret_cast<AudioConverterRef>(&word)}) {
        EXPECT_EQ(AudioConverterDispose(handle), paramErr);
        EXPECT_EQ(AudioConverterReset(handle), paramErr);
        EXPECT_EQ(AudioConverterGetPropertyInfo(handle, 'srcq', &size, &writable), paramErr);
        EXPECT_EQ(AudioConverterGetProperty(handle, 'srcq', &size, &word), paramErr);
        EXPECT_EQ(AudioConverterSetProperty(handle, 'srcq', 4, &word), paramErr);
    }
}

TEST(Lifetime, NewRefusesNullPointers)
{
    const auto good = format();
    auto* converter = reinterpret_cast<AudioConverterRef>(1);
    EXPECT_EQ(AudioConverterNew(nullptr, &good, &converter), paramErr);
    EXPECT_EQ(converter, nullptr);
    EXPECT_EQ(AudioConverterNew(&good, nullptr, &converter), paramErr);
    EXPECT_EQ(AudioConverterNew(&good, &good, nullptr), paramErr);
}

TEST(Lifetime, AtMost4096Converters)
{
    const UInt32 before = alive();
    std::vector<AudioConverterRef> all;
    const auto good = format();
    AudioConverterRef made = nullptr;
    OSStatus status = noErr;
    while (all.size() <= 4096 && !(status = AudioConverterNew(&good, &good, &made))) all.push_back(made);
    EXPECT_EQ(all.size(), 4096 - before);
    EXPECT_EQ(status, memFullErr);
    for (const AudioConverterRef each : all) EXPECT_EQ(AudioConverterDispose(each), noErr);
    EXPECT_EQ(alive(), before);
}

/// An input procedure that disposes its converter and frees the input memory, which must not be read
/// afterwards.
OSStatus disposing(AudioConverterRef converter, UInt32* packets, AudioBufferList* list,
                   AudioStreamPacketDescription**, void* context)
{
    auto& calls = *static_cast<int*>(context);
    ++calls;
    auto* const memory = new float[*packets];
    list->mBuffers[0].mData = memory;
    list->mBuffers[0].mDataByteSize = *packets * 4;
    EXPECT_EQ(AudioConverterDispose(converter), noErr);
    EXPECT_EQ(AudioConverterDispose(converter), paramErr);
    delete[] memory;
    return noErr;
}

TEST(Lifetime, DisposingInTheProcedureEndsTheFill)
{
    const UInt32 before = alive();
    for (const Float64 rate : {44100.0, 48000.0}) {
        Converter converter(format(), interleaved(rate, 1));
        int calls = 0;
        List list(format(), 100);
        EXPECT_EQ(fill(converter.release(), disposing, &calls, 100, list, paramErr), 0u);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(alive(), before);
    }
}

struct Nested {
    std::vector<OSStatus> statuses;
    AudioStreamBasicDescription seen{};
    static OSStatus procedure(AudioConverterRef converter, UInt32*, AudioBufferList*,
                              AudioStreamPacketDescription**, void* context)
    {
        Nested& self = *static_cast<Nested*>(context);
        List list(format(), 10);
        UInt32 packets = 10, word = 0, size = sizeof self.seen;
        self.statuses = {
            AudioConverterFillComplexBuffer(converter, procedure, context, &packets, list.get(), nullptr),
            AudioConverterReset(converter), AudioConverterSetProperty(converter, 'srcq', 4, &word),
            AudioConverterGetProperty(converter, 'acid', &size, &self.seen)};
        return noErr;
    }
};

TEST(Lifetime, CallsDuringAFillAreRefused)
{
    const Converter converter(format(), format());
    Nested nested;
    List list(format(), 10);
    EXPECT_EQ(fill(converter, Nested::procedure, &nested, 10, list), 10u);
    const OSStatus refused = kAudioConverterErr_OperationNotSupported;
    EXPECT_EQ(nested.statuses, (std::vector<OSStatus>{refused, refused, refused, noErr}));
    EXPECT_TRUE(nested.seen == format());
    EXPECT_EQ(AudioConverterReset(converter), noErr) << "accepted after the fill";
}

// A fill in progress ends with paramErr, or the next fill is refused.
TEST(Lifetime, DisposingOnAnotherThread)
{
    const UInt32 before = alive();
    for (int i = 0; i < 50; ++i) {
        Converter owner(format(), interleaved(i % 2 ? 44100 : 48000, 1));
        const AudioConverterRef converter = owner.release();
        std::atomic<bool> runs{false};
        std::thread filler([&] {
            static float samples[64];
            const auto procedure = [](AudioConverterRef, UInt32* packets, AudioBufferList* list,
                                      AudioStreamPacketDescription**, void* context) -> OSStatus {
                *static_cast<std::atomic<bool>*>(context) = true;
                *packets = std::min<UInt32>(*packets, 64);
                list->mBuffers[0].mData = samples;
                list->mBuffers[0].mDataByteSize = *packets * 4;
                return noErr;
            };
            List list(format(), 256);
            OSStatus status = noErr;
            while (!status) {
                list.restore();
                UInt32 packets = 256;
                status = AudioConverterFillComplexBuffer(converter, procedure, &runs, &packets, list.get(),
                                                         nullptr);
            }
            EXPECT_EQ(status, paramErr);
        });
        while (!runs) std::this_thread::yield();
        EXPECT_EQ(AudioConverterDispose(converter), noErr);
        filler.join();
    }
    EXPECT_EQ(alive(), before);
}

} // namespace
