// The render callback: the content of each slice, and the position of the next slice.
#include "tests/auplayer/rendered_file.h"
#include "tests/support/c_library_spy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

using test::Bits;
using test::excerpt;
using test::noise;
using test::RenderedFile;
using test::Slice;

const std::uint32_t sliceSizes[] = {1, 512, 1156, 2048, 8192};

TEST(Render, RendersTheWholeFileBitForBitInSlicesOfAnySize)
{
    for (const std::uint32_t channels : {1u, 2u, 6u})
        for (const std::uint32_t frames : {1u, 511u, 512u, 513u, 9000u, 16384u})
            for (const std::uint32_t slice : sliceSizes) {
                SCOPED_TRACE(testing::Message() << channels << " channels, " << frames << " by " << slice);
                const Bits samples = noise(frames, channels);
                RenderedFile file(samples, channels);
                const std::uint32_t slices = (frames + slice - 1) / slice + 2;
                Bits output;
                for (std::uint32_t i = 0; i < slices; ++i) {
                    ASSERT_EQ(file->position, std::min(i * slice, frames));
                    const Bits rendered = file.render(slice);
                    ASSERT_EQ(file->lastRenderOffset, std::min(i * slice, frames) * channels);
                    output.insert(output.end(), rendered.begin(), rendered.end());
                }
                ASSERT_EQ(file->position, frames);
                // The slices together are the file, followed by silence.
                ASSERT_TRUE(output == excerpt(samples, channels, 0, slices * slice));
            }
}

TEST(Render, EndsTheFileAtItsLastFrame)
{
    constexpr std::uint32_t frames = 1000, channels = 2;
    const struct {
        std::uint32_t position, slice;
        std::uint32_t after;
        const char* why;
    } rows[] = {
        {0, 0, 0, "no frames: nothing"},
        {0, 1, 1, "the first frame"},
        {0, 999, 999, "all but the last"},
        {0, 1000, 1000, "the whole file in one slice"},
        {0, 1001, 1000, "the whole file and one frame of silence"},
        {0, 8192, 1000, "the whole file and many frames of silence"},
        {487, 512, 999, "one frame before the end"},
        {488, 512, 1000, "exactly to the end"},
        {489, 512, 1000, "one frame past the end"},
        {998, 1, 999, "the last frame but one"},
        {999, 1, 1000, "the last frame"},
        {999, 2, 1000, "the last frame, and one of silence"},
        {999, 512, 1000, "the last frame, and many of silence"},
        {999, 0, 999, "no frames, before the last"},
        {1000, 0, 1000, "no frames at the end"},
        {1000, 1, 1000, "at the end"},
        {1000, 512, 1000, "at the end, a long slice"},
        {1001, 1, 1000, "past the end: the position returns to it"},
        {1001, 0, 1000, "past the end, no frames"},
        {100000, 512, 1000, "far past the end"},
        {0x7FFFFFFF, 512, 1000, "the largest signed position"},
        {0x80000000, 512, 1000, "2^31"},
        {0xFFFFFE00, 512, 1000, "the slice would end at 2^32"},
        {0xFFFFFE01, 512, 1000, "the slice would end past 2^32"},
        {0xFFFFFFFF, 1, 1000, "the largest position"},
        {0xFFFFFFFF, 0, 1000, "the largest position, no frames"},
        {0xFFFFFFFF, 512, 1000, "the sum would wrap to 511"},
        {0xFFFFFFFF, 8192, 1000, "the sum would wrap past the end"},
        {0xFFFF5238, 512, 1000, "-1 second at 44100 frames per second"},
    };
    const Bits samples = noise(frames, channels);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        RenderedFile file(samples, channels);
        file->position = row.position;
        EXPECT_EQ(file.render(row.slice), excerpt(samples, channels, row.position, row.slice));
        EXPECT_EQ(file->position, row.after);
        EXPECT_EQ(file->lastRenderOffset, row.position * channels);
    }
}

TEST(Render, IsSilentAfterTheEnd)
{
    RenderedFile file(noise(100, 2), 2);
    file->position = 99;
    EXPECT_NE(file.render(64), Bits(128));
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(file.render(64), Bits(128));
        ASSERT_EQ(file->position, 100u);
    }
}

TEST(Render, AnEmptyFileIsSilence)
{
    for (const std::uint32_t slice : {0u, 1u, 512u}) {
        RenderedFile file({}, 2);
        EXPECT_EQ(file.render(slice), Bits(2 * slice));
        EXPECT_EQ(file->position, 0u);
        file->position = 7;
        EXPECT_EQ(file.render(slice), Bits(2 * slice));
        EXPECT_EQ(file->position, 0u);
    }
}

TEST(Render, AFileWithoutSamplesIsSilence)
{
    // After a failed read the counts in the record are set; before any read they are 0.
    auplayer::LoadedAudio nothing = {}, counts = {};
    counts.frameCount = 1000;
    counts.format = {48000, kAudioFormatLinearPCM, kAudioFormatFlagsNativeFloatPacked, 8, 1, 8, 2, 32, 0};
    counts.byteSize = 8000;
    for (auplayer::LoadedAudio* audio : {&nothing, &counts})
        for (const std::uint32_t position : {0u, 744u, 745u, 999u, 1000u, 0xFFFFFFFFu}) {
            SCOPED_TRACE(testing::Message() << audio->frameCount << " frames, from " << position);
            RenderedFile file(noise(1, 2), 2);
            file->loadedAudio = audio;
            file->endFrame = 0;
            file->position = position;
            EXPECT_EQ(file.render(256), Bits(512));
            EXPECT_EQ(file->position, 0u);
            Slice slice({{2, 256 * 8}, {2, 64}, {2, 64, true}});
            file.render(slice, 256);
            EXPECT_EQ(slice.bits(0), Bits(512));
            EXPECT_EQ(slice.bits(1), Bits(16));
        }
}

// ---- other kinds of buffers ----

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const Bits& samples)
{
    const auto* const first = reinterpret_cast<const unsigned char*>(samples.data());
    return Bytes(first, first + 4 * samples.size());
}

TEST(Render, FillsTheFirstBufferToItsEndOrTheFiles)
{
    constexpr std::uint32_t frames = 1000, channels = 2, frame = 8;
    const struct {
        std::uint32_t position, slice, bytes;
        std::uint32_t copied; ///< number of copied bytes
        const char* why;
    } rows[] = {
        {0, 512, 512 * frame, 512 * frame, "the usual"},
        {0, 512, 511 * frame, 511 * frame, "one frame less"},
        {0, 512, 512 * frame - 3, 512 * frame - 3, "not whole frames"},
        {0, 512, 1, 1, "one byte"},
        {0, 512, 0, 0, "no bytes"},
        {0, 512, 513 * frame, 513 * frame, "more than the slice: the buffer is filled"},
        {0, 512, 1000 * frame, 1000 * frame, "up to the end"},
        {0, 512, 1001 * frame, 1000 * frame, "one frame past the end"},
        {0, 512, 1000 * frame + 1, 1000 * frame, "one byte past the end"},
        {488, 512, 512 * frame, 512 * frame, "exactly to the end"},
        {488, 512, 512 * frame + 1, 512 * frame, "one byte past the end"},
        {900, 512, 512 * frame, 100 * frame, "past the end"},
        {900, 512, 100 * frame, 100 * frame, "the slice passes the end, the buffer does not"},
        {900, 512, 99 * frame, 99 * frame, "the slice passes the end, the buffer is shorter"},
        {900, 512, 100 * frame + 1, 100 * frame, "the buffer passes the end by one byte"},
        {999, 1, 100 * frame, 1 * frame, "the last frame in a large buffer"},
        {999, 0, 100 * frame, 1 * frame, "no frames, before the last"},
        {1000, 1, 100 * frame, 0, "at the end"},
        {1000, 0, 100 * frame, 0, "at the end, no frames"},
        {0xFFFFFFFF, 512, 100 * frame, 0, "far past the end"},
    };
    const Bytes fileBytes = bytesOf(noise(frames, channels));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        RenderedFile file(noise(frames, channels), channels);
        file->position = row.position;
        Slice slice({{channels, row.bytes}});
        file.render(slice, row.slice);

        Bytes expected(row.bytes);
        if (row.copied)
            std::copy_n(&fileBytes[std::size_t{row.position} * frame], row.copied, expected.begin());
        EXPECT_EQ(slice.bytes(), expected);
        EXPECT_EQ(file->position, std::min<std::uint64_t>(std::uint64_t{row.position} + row.slice, frames))
            << "whatever the size of the buffer";
    }
}

TEST(Render, SilencesOtherBuffersInSlicesPastTheEnd)
{
    constexpr std::uint32_t frames = 1000;
    const Bits samples = noise(frames, 1);
    const struct {
        std::uint32_t position;
        bool isSilenced;
    } rows[] = {{0, false}, {744, false}, {745, true}, {999, true}, {1000, true}, {0xFFFFFFFF, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.position);
        RenderedFile file(samples, 1);
        file->position = row.position;
        Slice slice({{1, 256 * 4}, {1, 256 * 4}, {1, 3}, {1, 64, true}, {2, 2000}});
        file.render(slice, 256);
        EXPECT_EQ(slice.bits(0), excerpt(samples, 1, row.position, 256));
        for (const std::size_t other : {1u, 2u, 4u})
            EXPECT_EQ(slice.bytes(other),
                      Bytes(slice.bytes(other).size(), row.isSilenced ? 0 : Slice::before));
        EXPECT_EQ(slice.bytes(3), Bytes(64, Slice::before));
    }
}

TEST(Render, AdvancesWithoutMemory)
{
    for (const std::uint32_t position : {0u, 900u, 1000u, 0xFFFFFFFFu}) {
        RenderedFile file(noise(1000, 2), 2);
        file->position = position;
        Slice absent({{2, 512 * 8, true}});
        file.render(absent, 512);
        EXPECT_EQ(file->position, std::min<std::uint64_t>(std::uint64_t{position} + 512, 1000));

        file->position = position;
        Slice none({});
        file.render(none, 512);
        EXPECT_EQ(file->position, std::min<std::uint64_t>(std::uint64_t{position} + 512, 1000));
    }
}

// ---- allocation and locks ----

TEST(Render, AllocatesNothingAndTakesNoLock)
{
    RenderedFile file(noise(5000, 2), 2);
    Slice slice({{2, 2048 * 8}, {2, 100}});
    const int before = c_library_spy::alarms();
    std::vector<std::string> notes;
    for (const bool isLooping : {false, true})
        for (const std::uint32_t position : {0u, 3000u, 5000u, 0xFFFFFFFFu}) {
            if (isLooping) file.loop(1000, 4000);
            file->position = position;
            c_library_spy::begin();
            {
                const c_library_spy::NoAllocation renderThread;
                for (int i = 0; i < 8; ++i) file.render(slice, 2048);
            }
            for (std::string& note : c_library_spy::end()) notes.push_back(std::move(note));
        }
    EXPECT_EQ(c_library_spy::alarms(), before);
    EXPECT_EQ(notes, std::vector<std::string>());
}

TEST(Render, AnAllocationIsDetected)
{
    c_library_spy::begin();
    const int before = c_library_spy::alarms();
    {
        const c_library_spy::NoAllocation renderThread;
        EXPECT_EQ(std::calloc(1, 8), nullptr);
    }
    EXPECT_EQ(c_library_spy::end(), std::vector<std::string>{"calloc 8"});
    EXPECT_EQ(c_library_spy::alarms(), before + 1);
}

} // namespace
