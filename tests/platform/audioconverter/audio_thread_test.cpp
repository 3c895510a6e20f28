// A fill neither allocates memory nor takes a lock.
#include "tests/platform/audioconverter/converter.h"
#include "tests/platform/audioconverter/plain_samples.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

namespace {

using namespace test;

TEST(AudioThread, HookCountsHeapCalls)
{
    const allocator_hook::Count count;
    allocator_hook::watchThisThread(true);
    void* volatile memory = std::malloc(10);
    std::free(memory);
    allocator_hook::watchThisThread(false);
    EXPECT_GE(count.heapCalls(), 2);
}

/// A render call of a unit whose callback resets a converter.
class RenderCall {
public:
    RenderCall()
    {
        EXPECT_EQ(unit.setCallback(callback, this), noErr);
        EXPECT_EQ(AudioUnitInitialize(unit), noErr);
    }
    void reset(AudioConverterRef toReset)
    {
        converter = toReset;
        const AudioTimeStamp time = sampleTime(0);
        AudioUnitRender(unit, nullptr, &time, 0, 1, list.get());
    }

private:
    static OSStatus callback(void* self, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                             AudioBufferList*)
    {
        return AudioConverterReset(static_cast<RenderCall*>(self)->converter);
    }

    const Unit unit{'genr'};
    List list{canonical(44100, 2), 1};
    AudioConverterRef converter = nullptr;
};

// Elsewhere a reset replaces the conversion, so that the output is that of a new converter bit for bit.
TEST(AudioThread, FillAndResetInARenderCallNeitherAllocateNorLock)
{
    for (std::size_t kind = 0; kind < kindCount; ++kind)
        for (const Float64 to : {44100.0, 48000.0, 8000.0})
            for (const UInt32 channels : {1u, 2u, 6u}) {
                SCOPED_TRACE(std::string(kinds[kind].name) + " to " + std::to_string(to));
                const auto from = formatOf(kinds[kind], 44100, channels, kind % 2);
                Sound sound{from, std::vector<std::vector<unsigned char>>(channels), 3000, 333};
                for (auto& buffer : sound.buffers) buffer.resize(3000 * from.mBytesPerFrame);
                const Converter converter(from, canonical(to, 2));
                RenderCall inSlice;
                List list(canonical(to, 2), 512);
                const allocator_hook::Count count;
                UInt32 total = 0;
                for (int i = 0; i < 10; ++i) {
                    list.restore();
                    UInt32 packets = 512;
                    allocator_hook::watchThisThread(true);
                    AudioConverterFillComplexBuffer(converter, Sound::procedure, &sound, &packets, list.get(),
                                                    nullptr);
                    if (i == 8) inSlice.reset(converter);
                    allocator_hook::watchThisThread(false);
                    total += packets;
                }
                EXPECT_GT(total, 500u);
                EXPECT_EQ(count.heapCalls(), 0);
                EXPECT_EQ(count.locks(), 0);
            }
}

// Fills of random sizes, among changes of the quality and of the size of the source's answers.
TEST(AudioThread, NoFillSizeAllocates)
{
    const Converter converter(interleaved(44100, 2), canonical(48000, 2));
    Sound sound = soundOf(44100, 2, std::vector<float>(2 * 1000000, 0.5f));
    List list(canonical(48000, 2), 4096);
    const allocator_hook::Count count;
    std::mt19937 random(9);
    UInt32 total = 0;
    while (total < 1000000) {
        list.restore();
        sound.most = 1 + random() % 3000;
        UInt32 packets = 1 + random() % 4096;
        allocator_hook::watchThisThread(true);
        AudioConverterFillComplexBuffer(converter, Sound::procedure, &sound, &packets, list.get(), nullptr);
        allocator_hook::watchThisThread(false);
        ASSERT_GT(packets, 0u);
        total += packets;
        if (random() % 20 == 0) EXPECT_EQ(converter.set('srcq', UInt32{total % 2 ? 96u : 127u}), noErr);
        if (random() % 20 == 0) EXPECT_EQ(AudioConverterReset(converter), noErr);
    }
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_EQ(count.locks(), 0);
}

} // namespace
