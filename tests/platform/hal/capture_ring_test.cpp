// The ring buffer of a capture, between an audio thread and the thread that writes the file.
#include "platform/hal/capture.h"

#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <numeric>
#include <thread>

namespace {

using kvxplatform::hal::Capture;

constexpr std::size_t ringSamples = 1 << 16; // the smallest ring buffer
constexpr Capture::Form form = {1000, 1};

/// The samples 0, 1, 2 ….
std::vector<float> count(std::size_t samples)
{
    std::vector<float> all(samples);
    std::iota(all.begin(), all.end(), 0.0f);
    return all;
}

TEST(CaptureRing, WrapsAroundWithoutALoss)
{
    const support::TemporaryFolder folder;
    const std::string path = folder / "a.wav";
    std::string error;
    const std::shared_ptr<Capture> capture = Capture::open(path, form, error);
    ASSERT_NE(capture, nullptr) << error;

    const std::vector<float> all = count(5 * ringSamples);
    constexpr std::size_t slice = 999; // no divisor of the ring buffer's size
    for (std::size_t done = 0; done < all.size(); done += slice) {
        // Before each slice, at least half of the ring buffer is free or in the file's own buffer.
        while (std::filesystem::file_size(path + ".part") + ringSamples / 2 * sizeof(float) <
               done * sizeof(float))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const std::size_t frames = std::min(slice, all.size() - done);
        capture->write(all.data() + done, static_cast<std::uint32_t>(frames), form, false);
    }
    EXPECT_TRUE(capture->finish(error)) << error;
    EXPECT_EQ(support::readSound(path).samples, all);
}

TEST(CaptureRing, DropsOnlyWholeSlices)
{
    const support::TemporaryFolder folder;
    const std::string path = folder / "a.wav";
    std::string error;
    const std::shared_ptr<Capture> capture = Capture::open(path, form, error);
    ASSERT_NE(capture, nullptr) << error;

    const std::vector<float> all = count(ringSamples + 1);
    capture->write(all.data(), 10, form, false);
    capture->write(all.data(), ringSamples + 1, form, false); // larger than the ring buffer
    capture->write(all.data(), 10, form, false);
    EXPECT_FALSE(capture->finish(error));
    EXPECT_EQ(error,
              "the capture " + path + " has gaps: the disk was too slow; name a file on a faster disk");
    const std::vector<float> written = support::readSound(path).samples;
    ASSERT_EQ(written.size(), 20u);
    for (std::size_t i = 0; i < written.size(); ++i) EXPECT_EQ(written[i], static_cast<float>(i % 10));
}

TEST(CaptureRing, PrecedesSlicesThatAreWrittenAtOnce)
{
    const support::TemporaryFolder folder;
    const std::string path = folder / "a.wav";
    std::string error;
    const std::shared_ptr<Capture> capture = Capture::open(path, form, error);
    ASSERT_NE(capture, nullptr) << error;

    const std::vector<float> all = count(4 * ringSamples);
    bool mayWait = false;
    for (std::size_t done = 0; done < all.size(); done += ringSamples / 4, mayWait = !mayWait)
        capture->write(all.data() + done, ringSamples / 4, form, mayWait);
    EXPECT_TRUE(capture->finish(error)) << error;
    EXPECT_EQ(support::readSound(path).samples, all);
}

} // namespace
