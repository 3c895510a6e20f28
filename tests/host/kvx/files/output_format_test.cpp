// The table of the formats that kvx writes: rates, channels and lengths, both sides of each limit.
#include "host/kvx/files/output_format.h"
#include "host/kvx/files/wave_header.h"
#include "host/kvx/text/failure.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cstring>
#include <functional>

namespace {

using namespace kvx;

OutputFormat formatNamed(const std::string& name, const std::string& bits = "")
{
    return chooseFormat("out", {name, bits});
}

std::string problemOf(const std::function<void()>& check)
{
    try {
        check();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

TEST(OutputFormat, HoldsRatesUpToTheLimitsOfTheFormat)
{
    const struct {
        const char* name;
        int rate, nearest;
    } facts[] = {
        {"wav", 1000, 1000},      {"wav", 768000, 768000},  {"aiff", 768000, 768000},
        {"caf", 768000, 768000},  {"flac", 65535, 65535},   {"flac", 65536, 65530},
        {"flac", 65540, 65540},   {"flac", 655350, 655350}, {"flac", 655360, 655350},
        {"flac", 768000, 655350}, {"ogg", 200000, 200000},  {"ogg", 200001, 200000},
        {"opus", 48000, 48000},   {"opus", 44100, 48000},   {"opus", 1000, 8000},
        {"opus", 96000, 48000},   {"opus", 16000, 16000},   {"mp3", 44100, 44100},
        {"mp3", 44101, 44100},    {"mp3", 88200, 48000},    {"mp3", 7999, 8000},
        {"mp3", 8000, 8000},
    };
    for (const auto& fact : facts) {
        const std::string problem =
            problemOf([&] { checkFormat(formatNamed(fact.name), "out", fact.rate, 1); });
        const std::string advice = "`--device-rate " + std::to_string(fact.nearest) + "`";
        EXPECT_EQ(problem.empty(), fact.rate == fact.nearest) << fact.name << fact.rate;
        EXPECT_EQ(problem.find(advice) != problem.npos, fact.rate != fact.nearest) << problem;
        EXPECT_EQ(problemOf([&] { checkFormat(formatNamed(fact.name), "out", fact.nearest, 1); }), "");
    }
}

TEST(OutputFormat, HoldsChannelsUpToTheLimitOfTheFormat)
{
    const struct {
        const char* name;
        int most;
    } facts[] = {{"wav", 64}, {"aiff", 64}, {"caf", 64}, {"flac", 8}, {"ogg", 8}, {"opus", 8}, {"mp3", 2}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.name);
        EXPECT_EQ(problemOf([&] { checkFormat(formatNamed(fact.name), "out", 48000, fact.most); }), "");
        EXPECT_NE(problemOf([&] { checkFormat(formatNamed(fact.name), "out", 48000, fact.most + 1); }), "");
    }
}

TEST(OutputFormat, WaveAndAiffAreShorterThan4GiB)
{
    constexpr std::uint64_t most = 0xFFFF0000;
    const struct {
        const char *path, *name, *bits;
        std::uint64_t frames;
        bool isGood;
    } facts[] = {
        {"out", "wav", "float", most / 8, true},    {"out", "wav", "float", most / 8 + 1, false},
        {"out", "wav", "16", most / 4, true},       {"out", "wav", "16", most / 4 + 1, false},
        {"out", "wav", "24", most / 6, true},       {"out", "wav", "24", most / 6 + 1, false},
        {"out", "aiff", "32", most / 8 + 1, false}, {"out", "caf", "32", most, true},
        {"out", "flac", "16", most, true},          {"out", "ogg", "", most, true},
        {"-", "wav", "float", most, true},          {"/dev/null", "wav", "float", most, true},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(problemOf([&] {
                      checkLength(formatNamed(fact.name, fact.bits), fact.path, fact.frames, 2);
                  }) == "",
                  fact.isGood)
            << fact.path << fact.name << fact.bits << fact.frames;
}

TEST(OutputFormat, IsSupportedByTheInstalledLibrary)
{
    const struct {
        const char *name, *bits;
    } facts[] = {{"wav", "float"}, {"wav", "16"},    {"wav", "24"}, {"wav", "32"},  {"aiff", "float"},
                 {"aiff", "16"},   {"caf", "float"}, {"caf", "24"}, {"flac", "16"}, {"flac", "24"},
                 {"ogg", ""},      {"opus", ""},     {"mp3", ""}};
    for (const auto& fact : facts) {
        SF_INFO info = {};
        info.samplerate = 48000;
        info.channels = 2;
        info.format = libraryFormat(formatNamed(fact.name, fact.bits));
        EXPECT_TRUE(sf_format_check(&info)) << fact.name << fact.bits;
    }
}

TEST(WaveHeader, StatesTheFormat)
{
    const struct {
        std::uint32_t channels, bits;
        std::size_t size;
        std::uint16_t tag;
    } facts[] = {{1, 16, 44, 1},      {2, 16, 44, 1},      {2, 0, 58, 3},     {3, 16, 68, 0xFFFE},
                 {2, 24, 68, 0xFFFE}, {1, 32, 68, 0xFFFE}, {6, 0, 80, 0xFFFE}};
    for (const auto& fact : facts) {
        const std::string header = waveHeader(48000, fact.channels, fact.bits, 1001);
        std::uint16_t tag = 0;
        std::uint32_t fileBytes = 0, dataBytes = 0;
        std::memcpy(&tag, &header[20], sizeof tag);
        std::memcpy(&fileBytes, &header[4], sizeof fileBytes);
        std::memcpy(&dataBytes, &header[header.size() - 4], sizeof dataBytes);
        EXPECT_EQ(header.size(), fact.size);
        EXPECT_EQ(tag, fact.tag);
        EXPECT_EQ(dataBytes, 1001 * fact.channels * (fact.bits ? fact.bits : 32) / 8);
        EXPECT_EQ(fileBytes, header.size() - 8 + dataBytes + dataBytes % 2);
        EXPECT_EQ(waveHeader(48000, fact.channels, fact.bits, unknownLength).size(), header.size());
    }
}

} // namespace
