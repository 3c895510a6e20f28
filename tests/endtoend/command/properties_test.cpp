// `kvx get` and `kvx set`: output and messages of single commands.
#include "tests/endtoend/command/kvx_runner.h"

#include <nlohmann/json.hpp>

namespace {

using namespace endtoend;

const std::string stereo =
    "format='lpcm',flags=0x9,bytes/packet=8,frames/packet=1,bytes/frame=8,channels=2,bits=32\n";

/// Arguments of a command that succeeds, and the output of the command.
struct Fact {
    Arguments arguments;
    std::string out;
};

void expectOutputs(const char* command, const std::vector<Fact>& facts)
{
    for (const Fact& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        const auto result = runKvx(joined({command}, fact.arguments));
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out, fact.out);
    }
}

TEST(KvxGet, PrintsValuesByTheirType)
{
    expectOutputs("get", {
                             {{"0", "nsrt"}, "44100\n"},
                             {{"0", "name"}, "Simulated Device\n"},
                             {{"0", "lnam"}, "Simulated Device\n"},
                             {{"0", "uid "}, "kvx:simulated:0:Simulated Device\n"},
                             {{"0", "uid"}, "kvx:simulated:0:Simulated Device\n"},
                             {{"0", "tran"}, "'virt'\n"},
                             {{"0", "livn"}, "yes\n"},
                             {{"0", "goin"}, "no\n"},
                             {{"0", "oink"}, "-1\n"},
                             {{"0", "fsiz"}, "512\n"},
                             {{"0", "nsr#"}, "1000..768000\n"},
                             {{"0", "stm#"}, "3\n"},
                             {{"0", "stm#", "--scope", "input"}, ""},
                             {{"0", "slay"}, "channels=2,bytes=4096\n"},
                             {{"0", "sfmt"}, "rate=44100," + stereo},
                             {{"0", "dch2"}, "1\n2\n"},
                             {{"0", "srnd"}, "tag=0x650002,bitmap=0x0,descriptions=0\n"},
                             {{"0", "ssrc"}, "'spkr'\n"},
                             {{"system", "dev#"}, "2\n4\n"},
                             {{"system", "dOut"}, "2\n"},
                             {{"0", "volm", "--scope", "output", "--element", "1"}, "1\n"},
                             {{"0", "lchn", "--scope", "output", "--element", "2"}, "Right\n"},
                             {{"stream:3", "sdir"}, "0\n"},
                             {{"stream:3", "pft "}, "rate=44100," + stereo},
                         });
}

TEST(KvxGet, AcceptsObjectsSelectorsAndScopesInManyForms)
{
    for (const char* object :
         {"0", "Simulated Device", "simulated device", "lated DEV", "kvx:simulated:0:Simulated Device",
          "simulated", "id:2", "id:0x2", "2", "0x0", "row:0"})
        EXPECT_EQ(runKvx({"get", object, "name"}).out, "Simulated Device\n") << object;
    for (const char* selector :
         {"nsrt", "rate", "'nsrt'", "0x6E737274", "1853059700", "kAudioDevicePropertyNominalSampleRate",
          "kaudiodevicepropertynominalsamplerate"})
        EXPECT_EQ(runKvx({"get", "0", selector}).out, "44100\n") << selector;
    for (const char* scope : {"output", "outp", "0x6F757470"})
        EXPECT_EQ(runKvx({"get", "0", "volm", "--scope", scope, "--element", "0x1"}).out, "1\n") << scope;
}

TEST(KvxGet, AcceptsWordsForSelectors)
{
    const struct {
        const char *word, *selector;
    } facts[] = {{"rate", "nsrt"}, {"volume", "volm"}, {"mute", "mute"},
                 {"name", "name"}, {"buffer", "fsiz"}, {"latency", "ltnc"}};
    for (const auto& fact : facts) {
        const Arguments channel = {"--element", std::string(fact.word) == "volume" ? "1" : "0"};
        const auto result = runKvx(joined({"get", "simulated", fact.word, "--json"}, channel));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(nlohmann::json::parse(result.out)["selector"], fact.selector);
        EXPECT_EQ(result.out, runKvx(joined({"get", "0", fact.selector, "--json"}, channel)).out);
    }
}

TEST(KvxGet, PassesAValueToTheProperty)
{
    expectOutputs("get", {
                             {{"0", "v2db", "0.5", "--element", "1"}, "-32\n"},
                             {{"0", "db2v", "-32", "--element", "1"}, "0.5\n"},
                             {{"0", "v2db", "--hex", "0000003f", "--element", "1"},
                              "0000  00 00 00 c2" + std::string(38, ' ') + "|....|\n"},
                             {{"0", "sfm?", "rate=48000,channels=2"}, "yes\n"},
                             {{"0", "sfmm", "rate=48000"}, "rate=48000," + stereo},
                             {{"0", "sscn", "spkr"}, "Simulated Speakers\n"},
                             {{"0", "sscn", "0x73706B72"}, "Simulated Speakers\n"},
                         });
}

TEST(KvxGet, HexPrintsBytes)
{
    EXPECT_EQ(runKvx({"get", "0", "name", "--hex"}).out,
              "0000  53 69 6d 75 6c 61 74 65 64 20 44 65 76 69 63 65  |Simulated Device|\n"
              "0010  00" +
                  std::string(47, ' ') + "|.|\n");
    EXPECT_EQ(runKvx({"get", "0", "nsrt", "--hex"}).out,
              "0000  00 00 00 00 80 88 e5 40" + std::string(26, ' ') + "|.......@|\n");
}

TEST(KvxGet, PrintsJson)
{
    const auto get = [](const Arguments& arguments) {
        const auto result = runKvx(joined({"get", "--json"}, arguments));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return nlohmann::json::parse(result.out);
    };
    EXPECT_EQ(get({"0", "nsrt"}), nlohmann::json({{"object", 2},
                                                  {"selector", "nsrt"},
                                                  {"scope", "glob"},
                                                  {"element", 0},
                                                  {"value", 44100.0},
                                                  {"name", "kAudioDevicePropertyNominalSampleRate"}}));
    EXPECT_EQ(get({"0", "name"})["value"], "Simulated Device");
    EXPECT_EQ(get({"0", "livn"})["value"], true);
    EXPECT_EQ(get({"system", "dev#"})["value"], nlohmann::json({2, 4}));
    EXPECT_EQ(get({"0", "sfm?", "rate=48000,channels=2"})["value"], true);
    EXPECT_EQ(get({"0", "sscn", "spkr"})["value"], "Simulated Speakers");
    EXPECT_EQ(get({"0", "nsrt", "--hex"})["value"], "000000008088e540");
    const auto volume = get({"0", "volm", "--scope", "output", "--element", "1"});
    EXPECT_EQ(volume["scope"], "outp");
    EXPECT_EQ(volume["element"], 1);

    const auto all = get({"0"});
    ASSERT_TRUE(all.is_array());
    const auto rate =
        std::find_if(all.begin(), all.end(), [](const auto& each) { return each["selector"] == "nsrt"; });
    ASSERT_NE(rate, all.end());
    EXPECT_EQ(*rate, get({"0", "nsrt"}));
    EXPECT_EQ(all.size(), lineCount(runKvx({"get", "0"}).out));
}

TEST(KvxGet, PrintsAllPropertiesOfAnObject)
{
    const auto device = runKvx({"get", "0"});
    EXPECT_EQ(device.exitCode, 0);
    EXPECT_EQ(device.err, "");
    for (const char* line : {"'name' kAudioDevicePropertyDeviceName                      Simulated Device\n",
                             "'nsrt' kAudioDevicePropertyNominalSampleRate               44100\n",
                             "'dch2' kAudioDevicePropertyPreferredChannelsForStereo      1; 2\n"})
        EXPECT_NE(device.out.find(line), std::string::npos) << line << device.out;
    EXPECT_EQ(device.out.find("volm"), std::string::npos) << "only properties that the object has";
    const auto channel = runKvx({"get", "0", "--scope", "output", "--element", "1"});
    EXPECT_NE(channel.out.find("'volm' kAudioDevicePropertyVolumeScalar"), std::string::npos) << channel.out;
    const auto input = runKvx({"get", "1", "--scope", "output"});
    EXPECT_NE(input.out.find("kAudioDevicePropertyStreams                         (none)"), std::string::npos)
        << input.out;
    EXPECT_EQ(runKvx({"get", "system"}).exitCode, 0);
    EXPECT_NE(runKvx({"get", "stream:3"}).out.find("'sdir' kAudioStreamPropertyDirection"),
              std::string::npos);
}

TEST(KvxSet, WritesAndPrintsTheNewValue)
{
    expectOutputs("set", {
                             {{"0", "nsrt", "48000"}, "48000\n"},
                             {{"0", "fsiz", "0x100"}, "256\n"},
                             {{"0", "fsiz", "--hex", "00 01", "00 00"},
                              "0000  00 01 00 00" + std::string(38, ' ') + "|....|\n"},
                             {{"0", "volm", "0.5", "--scope", "output", "--element", "1"}, "0.5\n"},
                             {{"0", "vold", "-32", "--element", "2"}, "-32\n"},
                             {{"0", "vold", "-0.1", "--element", "2"},
                              "-0.099998474\n"}, // the device stores the volume as a factor
                             {{"0", "mute", "on"}, "yes\n"},
                             {{"0", "sfmt", "rate=96000,channels=2"}, "rate=96000," + stereo},
                             {{"stream:3", "pft ", "rate=8000"}, "rate=8000," + stereo},
                             {{"system", "dOut", "2"}, "2\n"},
                             {{"system", "dOut", "id:2"}, "2\n"},
                             {{"system", "dOut", "Simulated", "Device"}, "2\n"},
                             {{"system", "dIn ", "Simulated Input"}, "4\n"},
                             {{"system", "dIn ", "row:1"}, "4\n"},
                             {{"system", "slep", "no"}, "no\n"},
                             {{"0", "ssrc", "'spkr'"}, "'spkr'\n"},
                             {{"system", "slep", "--hex", "00000000"},
                              "0000  00 00 00 00" + std::string(38, ' ') + "|....|\n"},
                         });
}

TEST(KvxSet, PrintsTheNewValueAsJson)
{
    const auto result = runKvx({"set", "--json", "simulated", "rate", "48000"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(nlohmann::json::parse(result.out),
              nlohmann::json({{"object", 2},
                              {"selector", "nsrt"},
                              {"scope", "glob"},
                              {"element", 0},
                              {"value", 48000.0},
                              {"name", "kAudioDevicePropertyNominalSampleRate"}}));
}

TEST(KvxSet, FailsWhenTheDeviceTakesAnotherValue)
{
    const auto result = runKvx({"set", "0", "volm", "2", "--element", "1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "1\n");
    EXPECT_EQ(result.err,
              "kvx: set: Simulated Device, 'volm': 2 was written and 1 is read back; give a value that "
              "the device takes\n");
    for (const Arguments& more :
         {Arguments{"bsiz", "4095"}, {"ncyc", "0.5"}, {"volm", "-1", "--element", "2"}}) {
        SCOPED_TRACE(testing::PrintToString(more));
        EXPECT_EQ(runKvx(joined({"set", "0"}, more)).exitCode, 1);
    }
    EXPECT_EQ(runKvx({"set", "0", "oink", "-1"}).exitCode, 0) << "hog mode ignores the written value";
}

/// Arguments of a command that fails, and a part of the message of the command.
struct Refusal {
    Arguments arguments;
    const char* message;
};

/// Expect that each command fails, prints nothing on stdout and a message on stderr.
void expectRefusals(const std::vector<Refusal>& refusals, int exitCode)
{
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(testing::PrintToString(refusal.arguments));
        const auto result = runKvx(refusal.arguments);
        EXPECT_EQ(result.exitCode, exitCode);
        EXPECT_EQ(result.out, "");
        expectMessage(result, refusal.arguments.front());
        EXPECT_NE(result.err.find(refusal.message), std::string::npos) << result.err;
    }
}

TEST(KvxProperties, PrintStatusesInWords)
{
    expectRefusals(
        {
            // ---- statuses of the platform ----
            {{"get", "0", "abcd"},
             "kvx: get: Simulated Device, 'abcd': 'who?' (2003332927): the object has no such property"},
            {{"get", "0", "0"}, "'who?'"},
            {{"get", "0", "volm"}, "'who?' (2003332927)"},
            {{"get", "0", "volume"}, "an object, with `--element 1` those of its first channel"},
            {{"get", "0", "volm", "--element", "3"}, "'who?'"},
            {{"get", "0", "nsrt", "--scope", "none"}, "'who?'"},
            {{"get", "0", "lchn"}, "'who?'"},
            {{"get", "0", "sfm?", "channels=7"},
             "'!dat' (560226676): the device does not have that format or rate; `kvx get DEVICE nsr#` lists"},
            {{"get", "id:99", "name"}, "'!obj' (560947818): there is no such object"},
            {{"get", "id:0", "name"}, "'!obj'"},
            {{"get", "99", "name"}, "'!obj'"},
            {{"set", "0", "nsrt", "5"}, "'!dat'"},
            {{"set", "0", "name", "x"},
             "the property may be read-only; choose a property that can be written"},
            {{"set", "0", "fsiz", "--hex", "0001"},
             "'!siz' (561211770): the value has a wrong size for this property; `kvx get --hex`"},
            {{"set", "0", "fsiz", "0"}, "the operation or the value is not allowed; choose another value"},
            {{"set", "system", "dOut", "99"}, "there is no such device; `kvx devices` lists the devices"},
            {{"set", "0", "abcd", "--hex", "01"}, "'who?'"},
            // ---- objects ----
            {{"get", "stream:2", "sfmt"}, "object 2 is of class 'adev', not 'astr'; use id:2"},
            {{"get", "row:2", "name"}, "no device is called \"row:2\""},
            {{"set", "system", "dOut", "row:2"}, "no device is called \"row:2\""},
            {{"set", "system", "dOut", "1"}, "row:N is row N of that list"},
            {{"get", "Missing", "name"}, "no device is called \"Missing\"; `kvx devices` lists"},
            {{"get", "", "name"}, "no device is called"},
            {{"get", "Simulated", "name"}, "fits \"Simulated Device\", \"Simulated Input\"; give the number"},
            {{"set", "system", "dOut", "Missing"}, "no device is called"},
            // ---- CoreFoundation objects ----
            {{"get", "system", "duid", "x"}, "'duid' takes or returns a CoreFoundation object"},
            {{"get", "0", "suse"}, "'suse' takes or returns a CoreFoundation object"},
            {{"set", "0", "lnam", "x"}, "cannot create; choose another property"},
        },
        1);
}

TEST(KvxProperties, RefuseWrongUsageWithAdvice)
{
    expectRefusals(
        {
            {{"get"}, "OBJECT is required"},
            {{"set", "0"}, "SELECTOR is required"},
            {{"set", "0", "nsrt"}, "VALUE is required"},
            {{"get", "0", "kAudioNoSuch"}, "\"kAudioNoSuch\" is not a selector"},
            {{"get", "0", "kAudioPropertyWildcardChannel"}, "is not a selector"},
            {{"get", "Missing", "kAudioNoSuch"}, "is not a selector"},
            {{"get", "0", "nsrt", "--scope", "sideways"}, "\"sideways\" is not a scope"},
            {{"get", "0", "nsrt", "--element", "left"}, "\"left\" is not an element"},
            {{"get", "0", "nsrt", "5"}, "'nsrt' is read without a value"},
            {{"get", "0", "v2db"}, "give a VALUE"},
            {{"get", "0", "lnam", "--hex"}, "leave out --hex"},
            {{"get", "0", "sscn", "--hex", "00"}, "four bytes"},
            {{"set", "0", "nsrt", "fast"}, "\"fast\" is not a value for this; write a number such as 48000"},
            {{"set", "0", "nsrt", "nan"}, "\"nan\" is not a value for this; write a number such as 48000"},
            {{"set", "0", "nsrt", "inf"}, "\"inf\" is not a value for this"},
            {{"set", "0", "volm", "NaN", "--element", "1"},
             "\"NaN\" is not a value for this; write a number such as 0.5"},
            {{"set", "0", "sfmt", "rate=nan"}, "\"rate=nan\" is not a value for this"},
            {{"get", "0", "v2db", "infinity", "--element", "1"}, "\"infinity\" is not a value for this"},
            {{"set", "0", "fsiz", "-1"}, "whole number"},
            {{"set", "0", "mute", "maybe"}, "yes or no"},
            {{"set", "0", "slay", "2"}, "--hex"},
            {{"set", "0", "abcd", "1"}, "the type of the values of 'abcd' is unknown"},
            {{"set", "0", "fsiz", "--hex", "0"}, "two digits per byte"},
        },
        2);
}

TEST(KvxProperties, WorkInEveryHostVersion)
{
    for (const char* version :
         {"2010.5", "2011.5", "2012.99", "2013.02", "2013.04", "2015.02", "2015.99", "2016.0"}) {
        SCOPED_TRACE(version);
        EXPECT_EQ(runKvx({"get", "0", "lnam", "--host-version", version}).out, "Simulated Device\n");
        EXPECT_EQ(runKvx({"get", "0", "sscn", "spkr", "--host-version", version}).out,
                  "Simulated Speakers\n");
        EXPECT_EQ(runKvx({"set", "0", "nsrt", "48000", "--host-version", version}).out, "48000\n");
    }
}

} // namespace
