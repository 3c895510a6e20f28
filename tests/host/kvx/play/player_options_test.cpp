#include "host/kvx/command_line/parse.h"
#include "host/kvx/play/play_commands.h"

#include "host/kvx/text/failure.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Arguments = std::vector<std::string>;

/// Parse a command line into `options`.
/// Returns  the message of the error; "" if there is no error.
std::string read(const Arguments& arguments, kvx::PlayerOptions& options)
{
    kvx::Command program = {"", "", "", ""}, command = {"test", "", "", ""};
    command.groups = {playerOptions(options),
                      {"", {{"--help", "", {kvx::Target::Kind::flag, {}}, "", "", "", ""}}}};
    program.groups = {command.groups.back()};
    std::vector<const char*> words = {"kvx", "test"};
    for (const std::string& argument : arguments) words.push_back(argument.c_str());
    try {
        kvx::parse(program, {command}, static_cast<int>(words.size()), words.data());
        kvx::checkCombination(options);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(PlayerOptions, HaveNoValueByDefault)
{
    kvx::PlayerOptions options;
    EXPECT_EQ(read({}, options), "");
    EXPECT_FALSE(options.rate || options.pitch || options.volume || options.pan || options.start);
    EXPECT_FALSE(options.loop || options.gains || options.channelMap);
    EXPECT_EQ(options.unit, kvx::RateUnit::timePitch);
    EXPECT_FALSE(options.isInBackground || options.isCurveListWanted);
}

TEST(PlayerOptions, AreReadFromTheCommandLine)
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

    kvx::PlayerOptions varispeed;
    EXPECT_EQ(read({"--unit", "varispeed", "--pitch", "2400"}, varispeed), "");
    EXPECT_EQ(varispeed.unit, kvx::RateUnit::varispeed);
    kvx::PlayerOptions curves;
    EXPECT_EQ(read({"--eq", "list"}, curves), "");
    EXPECT_TRUE(curves.isCurveListWanted);
    EXPECT_FALSE(curves.gains);
}

TEST(PlayerOptions, AcceptTimesWithMinutes)
{
    const struct {
        Arguments arguments;
        double start, in, out;
        const char* why;
    } facts[] = {
        {{"--start", "90", "--loop", "1:100"}, 90, 1, 100, "plain seconds"},
        {{"--start", "1:30", "--loop", "1:30-2:05.5"}, 90, 90, 125.5, "minutes"},
        {{"--start", "1:01:30.5", "--loop", "1:00:00-2:00:00"}, 3690.5, 3600, 7200, "hours"},
        {{"--start", "2", "--loop", "1:30"}, 2, 1, 30, "one colon separates plain seconds"},
        {{"--start", "2", "--loop", "1.5-4"}, 2, 1.5, 4, "seconds with a dash"},
        {{"--start", "2", "--loop", "1e-3:4"}, 2, 1e-3, 4, "the dash of an exponent"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        kvx::PlayerOptions options;
        EXPECT_EQ(read(fact.arguments, options), "");
        EXPECT_EQ(options.start, fact.start);
        ASSERT_TRUE(options.loop);
        EXPECT_EQ(options.loop->in, fact.in);
        EXPECT_EQ(options.loop->out, fact.out);
    }
}

TEST(PlayerOptions, AcceptTheLimitsOfTheirRanges)
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

TEST(PlayerOptions, RefuseOtherValuesAndNameTheRange)
{
    const struct {
        Arguments arguments;
        const char* text;
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
        {{"--start", "-1"},
         "--start: -1 is not a time from 0 to 1000000000 seconds; write seconds, M:SS or H:MM:SS, such as "
         "90, 1:30.5 or 0:01:30"},
        {{"--start", "1:5"}, "--start: 1:5 is not a time"},
        {{"--loop", "1"}, "IN:OUT"},
        {{"--loop", "1:"}, "IN:OUT"},
        {{"--loop", "a:b"}, "IN:OUT"},
        {{"--loop", "2:2"}, "OUT must be later than IN"},
        {{"--loop", "2:1"}, "OUT must be later than IN"},
        {{"--loop", "-1:1"}, "IN must be 0 or more"},
        {{"--loop", "1:30:2:05"},
         "--loop 1:30:2:05: this is no loop; write IN:OUT in plain seconds, such as 1.5:4, or IN-OUT, such "
         "as 1:30-2:05.5"},
        {{"--loop", "1:30-1:30"},
         "--loop 1:30-1:30: OUT must be later than IN; write IN:OUT in plain seconds"},
        {{"--loop", "1:30-"}, "this is no loop"},
        {{"--loop", "1:30-2:5"}, "this is no loop"},
        {{"--loop", "1-2-3"}, "this is no loop"},
        {{"--loop", "--2"}, "this is no loop"},
        {{"--loop", "1:2", "--start", "2"}, "the loop, which goes from 0:01 to 0:02"},
        {{"--loop", "1:2", "--start", "0.9"}, "the loop, which goes from 0:01 to 0:02"},
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
        const std::string error = read(fact.arguments, options);
        EXPECT_NE(error.find(fact.text), std::string::npos)
            << testing::PrintToString(fact.arguments) << ": " << error;
    }
}

std::string againstFile(const kvx::PlayerOptions& options, double duration, int channels, int deviceChannels)
{
    try {
        kvx::SoundFormat format;
        format.sampleRate = 1000;
        format.frames = std::int64_t(duration * 1000);
        kvx::checkAgainstFile(options, {"a.wav", format}, channels, deviceChannels);
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
    EXPECT_EQ(againstFile(options, 1, 2, 2), "") << "a loop may end at the end of the file";

    const struct {
        void (*change)(kvx::PlayerOptions&);
        int channels, deviceChannels;
        const char* text;
    } facts[] = {
        {[](auto& o) { o.start = 1; }, 2, 2,
         "--start 0:01: a.wav is only 0:01 long; give a time before 0:01"},
        {[](auto& o) {
             o.loop = kvx::Loop{0.5, 1.001};
         },
         2, 2, "--loop 0:00.5-0:01.001: a.wav is only 0:01 long; give a time up to 0:01"},
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
        const std::string error = againstFile(each, 1, fact.channels, fact.deviceChannels);
        EXPECT_NE(error.find(fact.text), std::string::npos) << error;
    }
    kvx::PlayerOptions centre;
    centre.pan = 0;
    EXPECT_EQ(againstFile(centre, 1, 6, 6), "") << "pan 0 changes nothing";
}

TEST(ChannelsToLoad, FitFileAndDevice)
{
    const struct {
        int file, device, load;
        const char* why;
    } facts[] = {
        {1, 2, 2, "mono plays on both sides"},
        {1, 1, 1, "a mono device"},
        {2, 2, 2, "stereo"},
        {2, 1, 1, "the device limits the channels"},
        {6, 2, 2, "the device limits the channels"},
        {6, 6, 6, "all channels"},
        {6, 8, 6, "the file limits the channels"},
        {2, 0, 1, "a device that has lost its channels"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(kvx::channelsToLoad(fact.file, fact.device), fact.load) << fact.why;
}

TEST(ChannelsToLoad, AreThoseThatAChannelMapMayName)
{
    const struct {
        int file, device, load, loadWithMap;
    } facts[] = {{6, 2, 2, 6}, {2, 1, 1, 2}, {1, 2, 2, 2}, {6, 8, 6, 6}, {100, 2, 2, 64}};
    kvx::PlayerOptions options;
    for (const auto& fact : facts) {
        options.channelMap.reset();
        EXPECT_EQ(kvx::channelsToLoad(options, fact.file, fact.device), fact.load);
        options.channelMap = {1};
        EXPECT_EQ(kvx::channelsToLoad(options, fact.file, fact.device), fact.loadWithMap);
    }
}

} // namespace
