// The file player's options: what is read, and what is refused with the range.
#include "host/kvx/play/file_play.h"
#include "host/kvx/play/player_options.h"

#include "host/kvx/text/failure.h"

#include <gtest/gtest.h>

namespace {

using Arguments = std::vector<std::string>;

/// Reads as a command would; the text of the refusal, "" if there is none.
std::string read(const Arguments& arguments, kvx::PlayerOptions& options)
{
    CLI::App app("test", "test");
    kvx::addPlayerOptions(app, options);
    Arguments reversed(arguments.rbegin(), arguments.rend());
    try {
        app.parse(reversed);
        kvx::checkTogether(options);
    } catch (const CLI::ParseError& error) {
        return error.what();
    }
    return "";
}

TEST(PlayerOptions, AreUnsetUntilTheUserSetsThem)
{
    kvx::PlayerOptions options;
    EXPECT_EQ(read({}, options), "");
    EXPECT_FALSE(options.rate || options.pitch || options.volume || options.pan || options.start);
    EXPECT_FALSE(options.loop || options.gains || options.channelMap);
    EXPECT_EQ(options.unit, kvx::RateUnit::timePitch);
    EXPECT_FALSE(options.isInBackground || options.isCurveListWanted);
}

TEST(PlayerOptions, AreReadAsWritten)
{
    kvx::PlayerOptions options;
    EXPECT_EQ(read({"--rate", "1.5", "--pitch", "-1200", "--volume", "0.25", "--pan", "-1", "--start", "1.25",
                    "--loop", "1:2.5", "--eq", "bass", "--channel-map", "-1,0,1", "--background"},
                   options),
              "");
    EXPECT_EQ(options.rate, 1.5);
    EXPECT_EQ(options.pitch, -1200.0);
    EXPECT_EQ(options.volume, 0.25);
    EXPECT_EQ(options.pan, -1.0);
    EXPECT_EQ(options.start, 1.25);
    ASSERT_TRUE(options.loop);
    EXPECT_EQ(options.loop->in, 1.0);
    EXPECT_EQ(options.loop->out, 2.5);
    ASSERT_TRUE(options.gains);
    EXPECT_EQ((*options.gains)[0], 6.0);
    EXPECT_EQ(options.channelMap, std::vector<int>({-1, 0, 1}));
    EXPECT_TRUE(options.isInBackground);

    kvx::PlayerOptions tape;
    EXPECT_EQ(read({"--unit", "varispeed", "--pitch", "2400"}, tape), "");
    EXPECT_EQ(tape.unit, kvx::RateUnit::varispeed);
    kvx::PlayerOptions curves;
    EXPECT_EQ(read({"--eq", "list"}, curves), "");
    EXPECT_TRUE(curves.isCurveListWanted);
    EXPECT_FALSE(curves.gains);
}

TEST(PlayerOptions, TakeTheEdgesOfTheirRanges)
{
    for (const Arguments& arguments : std::vector<Arguments>{
             {"--rate", "0.04"},
             {"--rate", "32"},
             {"--rate", "0.25", "--unit", "varispeed"},
             {"--rate", "4", "--unit", "varispeed"},
             {"--pitch", "-2400"},
             {"--pitch", "2400"},
             {"--volume", "0"},
             {"--volume", "1"},
             {"--pan", "-1"},
             {"--pan", "1"},
             {"--start", "0"},
             {"--loop", "0:0.001"},
             {"--loop", "1:2", "--start", "1"},
             {"--channel-map", "-1"},
         }) {
        kvx::PlayerOptions options;
        EXPECT_EQ(read(arguments, options), "") << testing::PrintToString(arguments);
    }
}

TEST(PlayerOptions, RefuseWhatIsOutsideAndSayTheRange)
{
    const struct {
        Arguments arguments;
        const char* says;
    } facts[] = {
        {{"--rate", "0.03"}, "0.03 is not a number from 0.04 to 32"},
        {{"--rate", "32.01"}, "from 0.04 to 32"},
        {{"--rate", "nan"}, "from 0.04 to 32"},
        {{"--rate", "0.24", "--unit", "varispeed"}, "from 0.25 to 4"},
        {{"--rate", "4.01", "--unit", "varispeed"}, "from 0.25 to 4"},
        {{"--rate", "fast"}, "fast"},
        {{"--pitch", "2401"}, "from -2400 to 2400"},
        {{"--pitch", "-2401"}, "from -2400 to 2400"},
        {{"--volume", "-0.01"}, "from 0 to 1"},
        {{"--volume", "1.01"}, "from 0 to 1"},
        {{"--pan", "1.01"}, "from -1 to 1"},
        {{"--pan", "-1.01"}, "from -1 to 1"},
        {{"--start", "-1"}, "from 0 to"},
        {{"--loop", "1"}, "IN:OUT"},
        {{"--loop", "1:"}, "IN:OUT"},
        {{"--loop", "a:b"}, "IN:OUT"},
        {{"--loop", "2:2"}, "OUT behind it"},
        {{"--loop", "2:1"}, "OUT behind it"},
        {{"--loop", "-1:1"}, "0 or more"},
        {{"--loop", "1:2", "--start", "2"}, "the loop, which goes from 1 to 2"},
        {{"--loop", "1:2", "--start", "0.9"}, "the loop, which goes from 1 to 2"},
        {{"--eq", "1,2,3"}, "31 bands"},
        {{"--eq", "nosuch"}, "the curves are"},
        {{"--channel-map", "1,x"}, "list of channels"},
        {{"--channel-map", "0.5"}, "list of channels"},
        {{"--channel-map", "-2"}, "list of channels"},
        {{"--unit", "tape"}, "time-pitch"},
        {{"--unit", "varispeed", "--rate", "2", "--pitch", "100"}, "give one of them"},
    };
    for (const auto& fact : facts) {
        kvx::PlayerOptions options;
        const std::string text = read(fact.arguments, options);
        EXPECT_NE(text.find(fact.says), std::string::npos)
            << testing::PrintToString(fact.arguments) << ": " << text;
    }
}

std::string againstFile(const kvx::PlayerOptions& options, double duration, int channels, int deviceChannels)
{
    try {
        kvx::checkAgainstFile(options, "a.wav", duration, channels, deviceChannels);
    } catch (const kvx::Failure& failure) {
        return failure.what();
    }
    return "";
}

TEST(PlayerOptions, AreCheckedAgainstTheFile)
{
    kvx::PlayerOptions options;
    EXPECT_EQ(againstFile(options, 1, 6, 6), "");
    options.start = 0.999;
    options.loop = kvx::Loop{0.5, 1};
    options.pan = 0.5;
    options.channelMap = {1, 0};
    EXPECT_EQ(againstFile(options, 1, 2, 2), "") << "a loop may end where the file does";

    const struct {
        void (*change)(kvx::PlayerOptions&);
        int channels, deviceChannels;
        const char* says;
    } facts[] = {
        {[](auto& o) { o.start = 1; }, 2, 2,
         "--start 1 is not in front of the end of a.wav; give a time before 1.000 seconds"},
        {[](auto& o) {
             o.loop = kvx::Loop{0.5, 1.001};
         },
         2, 2, "--loop ends at 1.001, behind the end of a.wav; give a time up to 1.000 seconds"},
        {[](auto& o) { o.pan = 1; }, 1, 2, "--pan is for two channels and a.wav plays in 1"},
        {[](auto& o) { o.pan = 1; }, 6, 6, "--pan is for two channels"},
        {[](auto& o) {
             o.channelMap = {0, 1, 0};
         },
         2, 2, "names 3 channels and the device has 2"},
        {[](auto& o) {
             o.channelMap = {0, 2};
         },
         2, 2, "asks for channel 2 of a.wav; name channels from 0 to 1"},
    };
    for (const auto& fact : facts) {
        kvx::PlayerOptions each;
        fact.change(each);
        const std::string text = againstFile(each, 1, fact.channels, fact.deviceChannels);
        EXPECT_NE(text.find(fact.says), std::string::npos) << text;
    }
    kvx::PlayerOptions centre;
    centre.pan = 0;
    EXPECT_EQ(againstFile(centre, 1, 6, 6), "") << "the middle is where all channels are";
}

TEST(PlayerOptions, ChannelsToLoadFitFileAndDevice)
{
    const struct {
        int file, device, load;
        const char* why;
    } facts[] = {
        {1, 2, 2, "mono is heard on both sides"},
        {1, 1, 1, "where there are two"},
        {2, 2, 2, "as it is"},
        {2, 1, 1, "no more than the device has"},
        {6, 2, 2, "likewise"},
        {6, 6, 6, "all of them"},
        {6, 8, 6, "and no more than the file has"},
        {2, 0, 1, "a device that lost its channels"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::channelsToLoad(fact.file, fact.device), fact.load) << fact.why;
}

} // namespace
