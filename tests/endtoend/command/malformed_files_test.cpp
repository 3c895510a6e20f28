// Sound files with absurd headers: every command refuses them with the same message, and overruns no memory.
#include "tests/endtoend/command/kvx_runner.h"
#include "tests/support/sanitizers.h"
#include "tests/support/sound_samples.h"

#include <cstdint>
#include <fstream>

namespace {

using namespace endtoend;

using MalformedFiles = KvxTest;

const Arguments commands[] = {
    {"play", "--fast", "a.wav"},    {"play", "--fast", "--buffered", "a.wav"}, {"play", "--info", "a.wav"},
    {"render", "a.wav", "out.wav"}, {"soundstream", "--fast", "a.wav"},
};

TEST_F(MalformedFiles, WithAnAbsurdRateAreRefusedByEveryCommand)
{
    const struct {
        std::uint32_t rate, channels;
    } facts[] = {{1, 1}, {800000, 2}, {(1u << 28) + 64, 2}, {178956971, 3}, {0x7FFFFFFF, 1024}};
    for (const auto& fact : facts) {
        std::ofstream(folder / "a.wav", std::ios::binary)
            << support::waveBytes(fact.rate, fact.channels, 5000);
        for (const auto& command : commands) {
            SCOPED_TRACE(testing::PrintToString(command) + " " + std::to_string(fact.rate) + " Hz");
            const auto result = run(command);
            EXPECT_EQ(result.exitCode, 1);
            EXPECT_EQ(result.err,
                      "kvx: " + command.front() +
                          ": a.wav has a coding, sample rate or number of channels that kvx does not "
                          "play; convert it to WAV, of 1000 to 768000 Hz and up to 1024 channels\n");
            EXPECT_EQ(folder.count(), 1u);
        }
    }
}

TEST_F(MalformedFiles, AtTheLimitsOfRateAndChannelsPlay)
{
    const struct {
        std::uint32_t rate, channels;
    } facts[] = {{1000, 1}, {768000, 2}, {44100, 64}, {44100, 1024}};
    for (const auto& fact : facts)
        for (const auto& command : commands) {
            if (command.front() == "soundstream" && fact.rate != 44100)
                continue; // the only rate that `kvx soundstream` plays
            SCOPED_TRACE(testing::PrintToString(command) + " " + std::to_string(fact.rate) + " Hz, " +
                         std::to_string(fact.channels) + " channels");
            std::ofstream(folder / "a.wav", std::ios::binary)
                << support::waveBytes(fact.rate, fact.channels, 20);
            const auto result = run(command);
            EXPECT_EQ(result.exitCode, 0) << result.err;
            EXPECT_EQ(result.err, "");
        }
}

TEST_F(MalformedFiles, WithManyChannelsPlayInLittleMemory)
{
    if (support::hasAddressSanitizer || support::hasThreadSanitizer)
        GTEST_SKIP() << "a sanitizer reserves more address space than the limit";
    std::ofstream(folder / "a.wav", std::ios::binary) << support::waveBytes(44100, 1024, 20);
    const auto result = support::runChild(
        {"sh", "-c",
         "ulimit -v 300000; exec " + std::string(kvxPath) + " play --fast --quiet --buffered a.wav"},
        {}, folder.path());
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

TEST_F(MalformedFiles, WithoutSoundAreRefusedByEveryCommand)
{
    std::ofstream(folder / "a.wav", std::ios::binary) << std::string(30000, 'x');
    for (const auto& command : commands) {
        SCOPED_TRACE(testing::PrintToString(command));
        const auto result = run(command);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(
            result.err,
            "kvx: " + command.front() +
                ": a.wav cannot be decoded (it is not a sound file); kvx plays WAV, AIFF, CAF, FLAC, Ogg "
                "Vorbis, Opus, MP3 and the other formats that libsndfile reads\n");
    }
}

} // namespace
