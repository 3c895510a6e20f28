// A fill neither allocates memory nor takes a lock.
#include "tests/platform/audioconverter/converter.h"
#include "tests/platform/audioconverter/plain_samples.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

#include <cstdlib>
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

TEST(AudioThread, FillNeitherAllocatesNorLocks)
{
    for (std::size_t kind = 0; kind < kindCount; ++kind)
        for (const Float64 to : {44100.0, 48000.0, 8000.0})
            for (const UInt32 channels : {1u, 2u, 6u}) {
                SCOPED_TRACE(std::string(kinds[kind].name) + " to " + std::to_string(to));
                const auto from = formatOf(kinds[kind], 44100, channels, kind % 2);
                Sound sound{from, std::vector<std::vector<unsigned char>>(channels), 3000, 333};
                for (auto& buffer : sound.buffers) buffer.resize(3000 * from.mBytesPerFrame);
                const Converter converter(from, canonical(to, 2));
                List list(canonical(to, 2), 512);
                const allocator_hook::Count count;
                UInt32 total = 0;
                for (int i = 0; i < 10; ++i) {
                    list.restore();
                    UInt32 packets = 512;
                    allocator_hook::watchThisThread(true);
                    AudioConverterFillComplexBuffer(converter, Sound::procedure, &sound, &packets, list.get(),
                                                    nullptr);
                    if (i == 8) AudioConverterReset(converter);
                    allocator_hook::watchThisThread(false);
                    total += packets;
                }
                EXPECT_GT(total, 500u);
                EXPECT_EQ(count.heapCalls(), 0);
                EXPECT_EQ(count.locks(), 0);
            }
}

} // namespace
