#include "host/kvx/files/sound_file.h"
#include "host/kvx/text/failure.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using kvx::SoundFile;

TEST(SoundFile, ReportsRateChannelsAndFrames)
{
    support::TemporaryFolder folder;
    for (int channels : {1, 2, 3, 6}) {
        support::writeSound(support::makeNoise(22050, channels, 33), folder / "a.wav");
        const auto format = SoundFile(folder / "a.wav").format();
        EXPECT_EQ(format.sampleRate, 22050);
        EXPECT_EQ(format.fileChannels, channels);
        EXPECT_EQ(format.channels, channels == 1 ? 1 : 2);
        EXPECT_EQ(format.frames, 33);
    }
}

TEST(SoundFile, ReadsTheFirstTwoOfMoreChannels)
{
    support::TemporaryFolder folder;
    support::writeSound({8000, 3, {1, 2, 3, 4, 5, 6}}, folder / "a.wav");
    SoundFile file(folder / "a.wav");
    std::vector<float> samples(8, -1.0f);
    EXPECT_EQ(file.read(samples.data(), 4), 2u);
    EXPECT_EQ(samples, (std::vector<float>{1, 2, 4, 5, -1, -1, -1, -1}));
}

// A program that writes a WAV file to a pipe cannot correct the length in the header, and leaves 0xFFFFFFFF
// there.
TEST(SoundFile, WithoutALengthInItsHeaderIsReadToItsEnd)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 1, 1000), folder / "a.wav",
                        SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::fstream file(folder / "a.wav", std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(40); // position of the length of the data chunk
    file.write("\xff\xff\xff\xff", 4);
    file.close();
    SoundFile sound(folder / "a.wav");
    std::vector<float> samples(2000);
    EXPECT_EQ(sound.read(samples.data(), 2000), 1000u);
}

TEST(SoundFile, ReadsTheSameSamplesAsLibsndfile)
{
    support::TemporaryFolder folder;
    const struct {
        const char* name;
        int format, rate;
        float afterSeek = 0; ///< largest difference after a seek: an MP3 decoder rounds by its former frames
    } facts[] = {
        {"8 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 8000},
        {"16 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100},
        {"24 bits", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 48000},
        {"32 bits", SF_FORMAT_CAF | SF_FORMAT_PCM_32, 96000},
        {"double", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 44100},
        {"FLAC", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 44100},
        {"Vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100},
        {"Opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, 48000},
        {"MP3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 44100, 1e-6f},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        support::writeSound(support::makeNoise(fact.rate, 2, 5000), folder / "a", fact.format);
        const support::Sound expected = support::readSound(folder / "a");
        SoundFile file(folder / "a");
        std::vector<float> samples(expected.samples.size());
        std::size_t done = 0;
        for (std::size_t got = 700; got == 700; done += got) {
            const std::size_t left = expected.frames() - done;
            got = file.read(&samples[done * 2], std::min<std::size_t>(left, 700));
        }
        EXPECT_EQ(done, expected.frames());
        EXPECT_TRUE(samples == expected.samples);
        EXPECT_FALSE(file.isDamaged());

        for (const std::int64_t frame : {2500, 0, 4999, 1}) {
            file.seek(frame);
            const std::size_t left = expected.frames() - std::size_t(frame);
            samples.assign(left * 2, 0);
            EXPECT_EQ(file.read(samples.data(), left), left);
            float difference = 0;
            for (std::size_t i = 0; i < samples.size(); ++i)
                difference = std::max(difference,
                                      std::fabs(samples[i] - expected.samples[std::size_t(frame) * 2 + i]));
            EXPECT_LE(difference, fact.afterSeek) << frame;
            EXPECT_EQ(file.read(samples.data(), 1), 0u);
        }
        EXPECT_FALSE(file.isDamaged());
    }
}

TEST(SoundFile, CutByOneFrameReadsAllOtherFrames)
{
    support::TemporaryFolder folder;
    for (int format : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_WAV | SF_ENDIAN_BIG | SF_FORMAT_PCM_16,
                       SF_FORMAT_AIFF | SF_FORMAT_PCM_16, SF_FORMAT_SVX | SF_FORMAT_PCM_16,
                       SF_FORMAT_CAF | SF_FORMAT_PCM_16, SF_FORMAT_W64 | SF_FORMAT_PCM_16,
                       SF_FORMAT_RF64 | SF_FORMAT_PCM_16, SF_FORMAT_AU | SF_FORMAT_PCM_16}) {
        SCOPED_TRACE(format);
        support::writeSound(support::makeNoise(44100, 1, 1000), folder / "a", format);
        const std::vector<float> whole = support::readSound(folder / "a").samples;
        EXPECT_FALSE(SoundFile(folder / "a").format().isCutShort);
        std::filesystem::resize_file(folder / "a", std::filesystem::file_size(folder / "a") - 2);

        SoundFile file(folder / "a");
        EXPECT_TRUE(file.format().isCutShort);
        EXPECT_EQ(file.format().frames, 999);
        EXPECT_EQ(file.format().statedFrames, 1000);
        std::vector<float> samples(1000, 2.0f);
        EXPECT_EQ(file.read(samples.data(), 1000), 999u);
        EXPECT_TRUE(std::equal(samples.begin(), samples.begin() + 999, whole.begin()));
        EXPECT_EQ(samples[999], 2.0f) << "nothing is written past the end";
        EXPECT_FALSE(file.isDamaged()) << "all remaining frames decode";
    }
}

TEST(SoundFile, ReportsDamageInTheMiddleAfterReading)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 1, 100000), folder / "a.flac",
                        SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    const auto half = std::streamoff(std::filesystem::file_size(folder / "a.flac") / 2);
    std::fstream bytes(folder / "a.flac", std::ios::in | std::ios::out | std::ios::binary);
    bytes.seekp(half);
    bytes << std::string(20000, '\0');
    bytes.close();
    SoundFile file(folder / "a.flac");
    std::vector<float> samples(100000);
    const std::size_t got = file.read(samples.data(), samples.size());
    EXPECT_GT(got, 30000u) << "the frames before the damage";
    EXPECT_LT(got, 100000u);
    EXPECT_TRUE(file.isDamaged());
    EXPECT_FALSE(file.format().isCutShort);
}

std::exception_ptr exceptionOf(const std::string& path)
{
    try {
        SoundFile file(path);
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

std::string textOf(const std::exception_ptr& exception)
{
    try {
        if (exception) std::rethrow_exception(exception);
    } catch (const kvx::Failure& failure) {
        return failure.what();
    }
    return "opened";
}

std::string refusalOf(const std::string& path) { return textOf(exceptionOf(path)); }

// Some of the sample rates, multiplied by 4 seconds or by 4 or 8 bytes per frame, exceed 32 bits.
TEST(SoundFile, RefusesRatesOutOfRangeAndNamesTheLimits)
{
    support::TemporaryFolder folder;
    for (std::uint32_t rate :
         {1u, 999u, 768001u, 10000000u, 10000001u, 178956971u, (1u << 28) + 64, 1u << 30, 0x7FFFFFFFu})
        for (std::uint32_t channels : {1u, 2u, 3u, 64u, 1024u}) {
            std::ofstream(folder / "a.wav", std::ios::binary) << support::waveBytes(rate, channels, 50);
            EXPECT_EQ(
                refusalOf(folder / "a.wav"),
                (folder / "a.wav") +
                    " has a coding, sample rate or number of channels that kvx does not play; convert it "
                    "to WAV, of 1000 to 768000 Hz and up to 1024 channels")
                << rate << " Hz, " << channels << " channels";
        }
}

TEST(SoundFile, ReportsTooManyOpenFiles)
{
    support::TemporaryFolder folder;
    support::writeSound(support::makeNoise(44100, 1, 10), folder / "a.wav");
    ASSERT_EQ(refusalOf(folder / "a.wav"), "opened");
    rlimit former = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
    rlimit few = former;
    few.rlim_cur = rlim_t(dup(0)); // all descriptors below this number are in use
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    // The exception is examined after the limit is raised again, because a sanitizer may open files to do so.
    const auto refusal = exceptionOf(folder / "a.wav");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &former), 0);
    close(int(few.rlim_cur));
    EXPECT_EQ(textOf(refusal),
              (folder / "a.wav") + std::string(" cannot be opened: too many files are open; raise the "
                                               "limit with `ulimit -n 4096`"));
}

TEST(SoundFile, NamesMissingParts)
{
    kvx::SoundFormat format;
    format.frames = 999;
    EXPECT_EQ(kvx::missingParts("a.wav", format), std::vector<std::string>{});
    format.isCutShort = true;
    EXPECT_EQ(
        kvx::missingParts("a.wav", format),
        std::vector<std::string>{"a.wav is cut short: it ends before the length that its header states; "
                                 "get the file again"});
    format.statedFrames = 1000;
    format.omittedStreams = 1;
    EXPECT_EQ(
        kvx::missingParts("a.wav", format),
        (std::vector<std::string>{
            "a.wav is cut short: it holds 999 of the 1000 frames that its header states; get the file again",
            "a.wav plays in part: 1 of its chained streams cannot be decoded or has another sample rate or "
            "number of channels; split it into files"}));
}

#define E_ACUTE "\xc3\xa9"
#define E_AND_ACUTE "e\xcc\x81"

TEST(PathOnDisk, FindsComposedAndDecomposedNames)
{
    const struct {
        const char *onDisk, *requested, *found, *why;
    } facts[] = {
        {E_ACUTE ".wav", E_ACUTE ".wav", E_ACUTE ".wav", "the same composed form"},
        {E_AND_ACUTE ".wav", E_AND_ACUTE ".wav", E_AND_ACUTE ".wav", "the same decomposed form"},
        {E_ACUTE ".wav", E_AND_ACUTE ".wav", E_ACUTE ".wav", "composed on the disk"},
        {E_AND_ACUTE ".wav", E_ACUTE ".wav", E_AND_ACUTE ".wav", "decomposed on the disk"},
        {E_ACUTE "/" E_AND_ACUTE ".wav", E_AND_ACUTE "/" E_ACUTE ".wav", E_ACUTE "/" E_AND_ACUTE ".wav",
         "folder and file in different forms"},
        {"e.wav", E_ACUTE ".wav", E_ACUTE ".wav", "a letter without accent is a different letter"},
        {E_ACUTE ".wav", "\xe9.wav", "\xe9.wav", "invalid UTF-8 has no other form"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        support::TemporaryFolder folder;
        const std::filesystem::path file = folder / fact.onDisk;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << "x";
        EXPECT_EQ(kvx::pathOnDisk(folder / fact.requested), folder / fact.found);
    }
}

TEST(PathOnDisk, PrefersTheRequestedForm)
{
    support::TemporaryFolder folder;
    for (const char* name : {E_ACUTE, E_AND_ACUTE}) std::ofstream(folder / name) << "x";
    EXPECT_EQ(kvx::pathOnDisk(folder / E_ACUTE), folder / E_ACUTE);
    EXPECT_EQ(kvx::pathOnDisk(folder / E_AND_ACUTE), folder / E_AND_ACUTE);
}

TEST(PathOnDisk, ReturnsAMissingPathUnchanged)
{
    for (const char* path : {"", "/", ".", "no/such/" E_ACUTE, "/no//such/../" E_ACUTE "/"})
        EXPECT_EQ(kvx::pathOnDisk(path), path);
}

TEST(Pcm16, RoundsToTheNearest)
{
    constexpr float bit = 1.0f / 32768;
    const struct {
        float sample;
        int value;
        const char* why;
    } facts[] = {
        {0.0f, 0, "silence"},
        {-0.0f, 0, "silence"},
        {bit, 1, "a PCM16 value is unchanged"},
        {-bit, -1, "a negative PCM16 value is unchanged"},
        {32767 * bit, 32767, "the highest value"},
        {-1.0f, -32768, "the lowest value"},
        {1.0f, 32767, "above the highest value"},
        {-1.0f - bit, -32768, "below the lowest value"},
        {0.49f * bit, 0, "rounded down"},
        {0.51f * bit, 1, "rounded up"},
        {0.5f * bit, 0, "half, rounded to even"},
        {1.5f * bit, 2, "one and a half, rounded to even"},
        {-0.51f * bit, -1, "rounded down, away from 0"},
        {32766.6f * bit, 32767, "rounded up to the highest value"},
        {1e30f, 32767, "far out of range"},
        {-std::numeric_limits<float>::infinity(), -32768, "infinity"},
        {std::nanf(""), 0, "NaN"},
    };
    for (const auto& fact : facts) EXPECT_EQ(kvx::toPcm16(fact.sample), fact.value) << fact.why;
}

std::vector<std::int16_t> readAll(const std::string& path, float gain, std::size_t blockFrames)
{
    kvx::Pcm16Reader reader(path, gain);
    std::vector<std::int16_t> samples, block(blockFrames * 2);
    for (std::size_t got = blockFrames; got == blockFrames;) {
        got = reader.read(block.data(), blockFrames);
        samples.insert(samples.end(), block.begin(), block.begin() + std::ptrdiff_t(got * 2));
    }
    return samples;
}

TEST(Pcm16, ReadsFilesAsStereo)
{
    constexpr float bit = 1.0f / 32768;
    const struct {
        int channels;
        float gain;
        std::vector<float> samples;
        std::vector<std::int16_t> read;
    } facts[] = {
        {1, 1, {1, -2, 3}, {1, 1, -2, -2, 3, 3}}, {2, 1, {1, -2, 3, 4}, {1, -2, 3, 4}},
        {3, 1, {1, 2, 9, 3, 4, 9}, {1, 2, 3, 4}}, {2, 0.5f, {100, -200}, {50, -100}},
        {2, 2, {20000, -20000}, {32767, -32768}},
    };
    const support::TemporaryFolder folder;
    for (const auto& fact : facts) {
        support::Sound sound{44100, fact.channels, fact.samples};
        for (float& sample : sound.samples) sample *= bit;
        support::writeSound(sound, folder / "a.wav");
        for (const std::size_t blockFrames : {1, 2, 100})
            EXPECT_EQ(readAll(folder / "a.wav", fact.gain, blockFrames), fact.read) << blockFrames;
    }
}

} // namespace
