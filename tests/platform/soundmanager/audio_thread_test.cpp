// Tests that the render thread of a mixer allocates nothing and takes no lock.
#include "tests/platform/soundmanager/sound.h"
#include "tests/support/allocator_hook.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace test;

TEST(MixerRenderThread, HeapCallsAreCounted)
{
    const allocator_hook::Count count;
    allocator_hook::watchThisThread(true);
    void* volatile memory = std::malloc(10);
    std::free(memory);
    allocator_hook::watchThisThread(false);
    EXPECT_EQ(count.heapCalls(), 2);
}

/// Play buffers through a mixer of this block size to their end.
void fetchAll(long blockFrames)
{
    Mixer mixer({}, blockFrames);
    const Form forms[] = {
        {}, {'raw ', 8, 1, 22050}, {'twos', 16, 2, 48000}, {'NONE', 8, 2, 8000}, {'twos', 8, 1}};
    std::vector<std::unique_ptr<Buffer>> buffers;
    for (const Form& form : forms) {
        const SoundSource source = mixer.add();
        for (int i = 0; i < 8; ++i) {
            const Form& own = i % 4 == 3 ? forms[1] : form;
            buffers.push_back(std::make_unique<Buffer>(own, noise(own, 500)));
            buffers.back()->block.leftVolume = static_cast<short>(0x100 - i);
            ASSERT_EQ(mixer.play(source, *buffers.back()), noErr);
        }
    }
    const allocator_hook::Count count;
    ComponentParameters parameters = {0, sizeof(long), kSoundComponentGetSourceDataSelect, {0}};
    std::thread([&] { // a new thread, so that the test includes a thread's first fetch
        for (long count = 1, fetches = 0; count > 0; ++fetches) {
            SoundComponentDataPtr data = nullptr;
            parameters.params[0] = reinterpret_cast<long>(&data);
            allocator_hook::watchThisThread(true);
            const ComponentResult status = fetches % 2 ? SoundComponentGetSourceData(mixer.instance, &data)
                                                       : DelegateComponentCall(&parameters, mixer.instance);
            allocator_hook::watchThisThread(false);
            ASSERT_EQ(status, noErr);
            count = data->sampleCount;
        }
    })
        .join();
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_EQ(count.locks(), 0);
    for (const auto& buffer : buffers) EXPECT_EQ(buffer->completions, 1);
}

// The test covers buffers with and without rate conversion, all sample sizes, volumes, completions and tails.
// It fetches blocks of several sizes, directly and by a delegated component call.
TEST(MixerRenderThread, FetchesWithoutAllocationOrLock)
{
    for (const long blockFrames : {333, 1, 64, 1024, 20000}) {
        SCOPED_TRACE(blockFrames);
        fetchAll(blockFrames);
    }
}

} // namespace
