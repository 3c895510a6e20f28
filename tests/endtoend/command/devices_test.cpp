// `kvx devices`: the table of devices, JSON output, and the device watch.
#include "tests/endtoend/command/kvx_runner.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <sstream>
#include <thread>

namespace {

using namespace endtoend;
using Lines = std::vector<std::string>;

const char* const wholeTable =
    "no.  id  name              system     maker      UID                               in  "
    "out   rate  rates        slice  "
    "latency  default  state\n"
    "  0   2  Simulated Device  simulated  KVX Audio  kvx:simulated:0:Simulated Device   0   "
    " 2  44100  1000-768000    512  "
    "      0  out sys  idle\n"
    "  1   4  Simulated Input   simulated  KVX Audio  kvx:simulated:input                1   "
    " 0  44100  1000-768000    512  "
    "      0  in       idle\n";

TEST(KvxDevices, PrintsATable)
{
    const auto result = runKvx({"devices"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, wholeTable);
}

TEST(KvxDevices, PrintsTheSameTableInEveryHostVersion)
{
    for (const char* version : {"2010.5", "2011.5", "2012.99", "2013.02", "2013.03", "2013.04", "2015.02",
                                "2015.03", "2015.99", "2016.0"}) {
        const auto result = runKvx({"devices", "--host-version", version});
        EXPECT_EQ(result.exitCode, 0) << version;
        EXPECT_EQ(result.err, "") << version;
        EXPECT_EQ(result.out, wholeTable) << version;
    }
}

TEST(KvxDevices, PrintsJson)
{
    const auto result = runKvx({"devices", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const auto json = nlohmann::json::parse(result.out);
    ASSERT_EQ(json.size(), 2u);
    EXPECT_EQ(json[0], nlohmann::json({{"number", 0},
                                       {"id", 2},
                                       {"name", "Simulated Device"},
                                       {"system", "simulated"},
                                       {"maker", "KVX Audio"},
                                       {"uid", "kvx:simulated:0:Simulated Device"},
                                       {"inputChannels", 0},
                                       {"outputChannels", 2},
                                       {"rate", 44100.0},
                                       {"rates", {{{"minimum", 1000.0}, {"maximum", 768000.0}}}},
                                       {"sliceFrames", 512},
                                       {"latencyFrames", 0},
                                       {"isDefaultOutput", true},
                                       {"isDefaultSystemOutput", true},
                                       {"isDefaultInput", false},
                                       {"isAlive", true},
                                       {"isRunning", false}}));
    EXPECT_EQ(json[1]["inputChannels"], 1);
    EXPECT_EQ(json[1]["isDefaultInput"], true);
}

TEST(KvxDevices, RefusesWrongUsage)
{
    const struct {
        Arguments arguments;
        const char* names;
    } facts[] = {
        {{"devices", "--json", "--watch"}, "--json"},
        {{"devices", "--demo"}, "--watch"},
        {{"devices", "--watch", "--demo", "0"}, "0.001"},
        {{"devices", "--watch", "--demo", "soon"}, "soon"},
        {{"devices", "0"}, "0"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::PrintToString(fact.arguments));
        const auto result = runKvx(fact.arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        expectMessage(result, "devices");
        EXPECT_NE(result.err.find(fact.names), std::string::npos) << result.err;
    }
    const auto result = runKvx({"devices", "--library", "/no/such.so"});
    EXPECT_EQ(result.exitCode, 1);
    expectMessage(result, "devices");
    EXPECT_NE(result.err.find("/no/such.so"), std::string::npos) << result.err;
}

/// Return the reported changes: the lines after the table, without the time at the start of each line.
Lines changesIn(const std::string& out)
{
    Lines changes;
    std::istringstream text(out.substr(std::string(wholeTable).size()));
    for (std::string line; std::getline(text, line);) {
        EXPECT_EQ(line.substr(2, 1) + line.substr(5, 1) + line.substr(8, 2), "::  ") << line;
        changes.push_back(line.substr(10));
    }
    return changes;
}

TEST(KvxDevices, WatchPrintsEachChangeOfTheDemoInOrder)
{
    support::Child child(kvxCommand({"devices", "--watch", "--demo", "0.1"}));
    while (child.isRunning() && child.outSoFar().find("Demo Device 1 (id 6): went") == std::string::npos)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    child.send(SIGINT);
    const auto result = child.wait();
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.err, "") << "no leaks";
    ASSERT_EQ(result.out.substr(0, std::string(wholeTable).size()), wholeTable);

    Lines changes = changesIn(result.out);
    ASSERT_GE(changes.size(), 12u);
    changes.resize(12); // drop changes of the next round of the demo
    const std::string device = "Demo Device 1 (id 6)", former = "Simulated Device (id 2)";
    EXPECT_EQ(
        changes,
        (Lines{device + ": came, 0 in, 2 out, 44100 Hz", "default output: from " + former + " to " + device,
               device + ": rate from 44100 to 48000 Hz", device + ": slice from 512 to 256 frames",
               device + ": volume of channel 1 from 1 to 0.5", device + ": mute on", device + ": mute off",
               device + ": running", device + ": stopped", device + ": no longer alive",
               "default output: from " + device + " to " + former, device + ": went"}));
}

TEST(KvxDevices, WatchEndsAtAnyMomentWithoutLeaks)
{
    const struct {
        const char* line;
        int signal, exitCode;
    } facts[] = {{"rate from", SIGINT, 130},
                 {"running", SIGTERM, 143},
                 {"no longer alive", SIGINT, 130},
                 {"latency", SIGINT, 130}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.line);
        support::Child child(kvxCommand({"devices", "--watch", "--demo", "0.05"}));
        while (child.isRunning() && child.outSoFar().find(fact.line) == std::string::npos)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        child.send(fact.signal);
        const auto result = child.wait();
        EXPECT_EQ(result.exitCode, fact.exitCode);
        EXPECT_EQ(result.err, "");
    }
}

} // namespace
