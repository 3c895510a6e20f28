// Peak memory during a load by the file player: the samples as 32-bit floats, and at most 2 MiB more.
#include "tests/endtoend/fileplayer/file_player.h"
#include "tests/support/allocator_hook.h"

#include <sndfile.h>

#include <cstdlib>

namespace {

using namespace endtoend;

constexpr std::size_t allowance = 2 << 20;

void* volatile kept = nullptr;

TEST(FilePlayerHeap, CountsAllocatedBytesAndTheirPeak)
{
    const std::size_t before = allocator_hook::bytesInUse();
    allocator_hook::resetPeak();
    kept = std::malloc(1000000);
    EXPECT_GE(allocator_hook::bytesInUse(), before + 1000000);
    std::free(kept);
    kept = nullptr;
    EXPECT_LT(allocator_hook::bytesInUse(), before + 100000);
    EXPECT_GE(allocator_hook::peakBytes(), before + 1000000);
    allocator_hook::resetPeak();
    EXPECT_LT(allocator_hook::peakBytes(), before + 100000);
}

TEST(FilePlayerHeap, OfALoadedFileIsItsSamplesAndAtMostTheAllowance)
{
    const support::TemporaryFolder folder;
    const struct {
        const char* name;
        int format, rate, channels;
        std::size_t frames;
    } facts[] = {
        {"one.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 1, 1},
        {"short.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2, 1000},
        {"16.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2, 3000000},
        {"six.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 96000, 6, 1000000},
        {"24.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 48000, 2, 1000000},
        {"x.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 2, 500000},
        {"x.opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000, 2, 300000},
        {"x.mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, 2, 500000},
    };
    for (const auto& fact : facts) {
        const std::string path = folder / fact.name;
        support::writeSound(support::makeSweep(fact.rate, fact.channels, fact.frames), path, fact.format);
        for (const char* method : {"LoadFile", "LoadFileMT"}) {
            SCOPED_TRACE(std::string(fact.name) + " by " + method);
            LoadedHost loaded;
            SteppedDevice device(fact.rate, std::uint32_t(fact.channels));
            KVXPlatformSetOutputTap(device.id(), nullptr, nullptr);
            const host::FolderItem file = host::FolderItem::at(path);
            { // not measured: the first player makes objects that all later players share
                const host::Object first = loaded.host.create(filePlayerClass);
                first.call(method, file, fact.channels, fact.channels);
            }
            const std::size_t before = allocator_hook::bytesInUse();
            allocator_hook::resetPeak();
            {
                const host::Object player = loaded.host.create(filePlayerClass);
                ASSERT_TRUE(player.call(method, file, fact.channels, fact.channels).boolean());
                const std::size_t limit = 4 * std::size_t(fact.channels) * fact.frames + allowance;
                EXPECT_LE(allocator_hook::peakBytes() - before, limit) << "peak during the load";
                EXPECT_GE(allocator_hook::bytesInUse() - before, limit - allowance)
                    << "the samples are in memory";
                player.set("CurrentDeviceID", std::int64_t(device.id()));
                player.call("Play");
                device.step(2000);
                player.call("Pause");
                EXPECT_LE(allocator_hook::peakBytes() - before, limit) << "peak after playback";
            }
            EXPECT_LE(allocator_hook::bytesInUse(), before + 100000) << "the samples are freed";
        }
    }
}

} // namespace
