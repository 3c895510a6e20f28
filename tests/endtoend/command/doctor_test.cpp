// `kvx doctor`: its lines, JSON and exit code on the simulated device, with limits and with sound servers.
#include "tests/endtoend/command/kvx_runner.h"

#include <nlohmann/json.hpp>
#include <sndfile.h>

#include <filesystem>
#include <sstream>
#include <unistd.h>

namespace {

using namespace endtoend;

/// Return the line of the report about `subject`.
std::string lineOf(const support::ChildResult& result, const std::string& subject)
{
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);)
        if (line.compare(9, subject.size() + 1, subject + " ") == 0) return line;
    return "no line about " + subject + " in:\n" + result.out;
}

TEST(KvxDoctor, ReportsThatTheSimulatedDeviceCanPlay)
{
    const auto result = runKvx({"doctor"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(lineOf(result, "output"),
              "ok       output                `kvx play` plays to Simulated Device");
    EXPECT_EQ(lineOf(result, "device 0"),
              "ok       device 0              Simulated Device (simulated): 44100 Hz, 2 out, 0 in");
    EXPECT_EQ(lineOf(result, "KVXAudio.so"),
              "ok       KVXAudio.so           loads from " KVX_BINARY_DIR "/KVXAudio.so");
    EXPECT_EQ(lineOf(result, "KVX_AUDIO_DEVICE"), "ok       KVX_AUDIO_DEVICE      \"simulated\"");
    const std::string version = std::string(sf_version_string()).substr(std::string("libsndfile-").size());
    EXPECT_EQ(lineOf(result, "libsndfile").rfind("ok       libsndfile            " + version + " in /", 0),
              0u)
        << result.out;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);)
        EXPECT_TRUE(line.rfind("ok       ", 0) == 0 || line.rfind("problem  ", 0) == 0) << line;
}

TEST(KvxDoctor, PrintsTheSameReportAsJson)
{
    const auto text = runKvx({"doctor"}), result = runKvx({"doctor", "--json"});
    EXPECT_EQ(result.exitCode, 0);
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["canPlay"], true);
    EXPECT_EQ(json["checks"].size(), lineCount(text.out));
    EXPECT_EQ(json["checks"][0], nlohmann::json::parse(R"({"subject": "output", "isGood": true,
        "finding": "`kvx play` plays to Simulated Device", "advice": ""})"));
}

TEST(KvxDoctor, FailsIfNoDeviceOrNoLibraryCanPlay)
{
    const auto device = support::runChild(kvxCommand({"doctor"}), {{"KVX_AUDIO_DEVICE", "Bathroom"}});
    EXPECT_EQ(device.exitCode, 1);
    EXPECT_EQ(device.err, "");
    EXPECT_EQ(lineOf(device, "output")
                  .rfind("problem  output                there is no output device \"Bathroom\"", 0),
              0u)
        << device.out;
    const auto library = runKvx({"doctor", "--library", "/no/such.so"});
    EXPECT_EQ(library.exitCode, 1);
    EXPECT_EQ(library.err, "");
    EXPECT_EQ(lineOf(library, "KVXAudio.so").rfind("problem  KVXAudio.so           ", 0), 0u) << library.out;
    EXPECT_EQ(nlohmann::json::parse(runKvx({"doctor", "--library", "/no/such.so", "--json"}).out)["canPlay"],
              false);
}

// Root may use real-time scheduling despite the limit, unless its process has lost that capability.
TEST(KvxDoctor, TriesRealTimeSchedulingAndReadsTheLimits)
{
    Arguments command = {"prlimit", "--rtprio=0", "--memlock=1048576"};
    if (geteuid() == 0)
        command = joined(command, {"setpriv", "--bounding-set", "-sys_nice", "--inh-caps", "-sys_nice"});
    const auto result =
        support::runChild(joined(command, kvxCommand({"doctor"})), {{"JACK_DEFAULT_SERVER", "studio"}});
    EXPECT_EQ(result.exitCode, 0) << "limits do not prevent playback: " << result.err;
    EXPECT_EQ(
        lineOf(result, "real time")
            .rfind(
                "problem  real time             SCHED_FIFO of priority 10 is refused (RLIMIT_RTPRIO 0), so "
                "a busy machine may cause gaps; run `sudo ",
                0),
        0u)
        << result.out;
    EXPECT_EQ(
        lineOf(result, "locked memory")
            .rfind("problem  locked memory         1 MiB (RLIMIT_MEMLOCK), too little for a client of JACK; "
                   "run `sudo ",
                   0),
        0u)
        << result.out;
}

TEST(KvxDoctor, FindsTheServersOfTheUser)
{
    const support::TemporaryFolder runTime;
    std::filesystem::create_directory(runTime / "pulse");
    std::ofstream(runTime / "pulse/native");
    const auto result = support::runChild(kvxCommand({"doctor"}), {{"XDG_RUNTIME_DIR", runTime.path()}});
    EXPECT_EQ(lineOf(result, "PipeWire"), "ok       PipeWire              is not running");
    EXPECT_NE(lineOf(result, "PulseAudio").find(" is running, "), std::string::npos) << result.out;
}

} // namespace
