#include "host/kvx/doctor/checks.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

using kvx::SystemFacts;

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();
// The package names of the architecture for which this test is built.
#define ARCHITECTURE (sizeof(void*) == 4 ? ":i386" : "")

KVXDeviceInfo device(const char* name, const char* system, bool isSimulated)
{
    KVXDeviceInfo row = {};
    std::strcpy(row.name, name);
    std::strcpy(row.system, system);
    row.sampleRate = 48000;
    row.outputChannels = 2;
    row.isSimulated = isSimulated;
    row.isAlive = 1;
    return row;
}

KVXLibraryInfo library(const char* name, const char* version, const char* path, const char* systems)
{
    KVXLibraryInfo row = {};
    std::strcpy(row.name, name);
    std::strcpy(row.version, version);
    std::strcpy(row.path, path);
    std::strcpy(row.systems, systems);
    return row;
}

/// A system without a problem.
SystemFacts goodFacts()
{
    SystemFacts facts;
    facts.pluginPath = "/k/KVXAudio.so";
    facts.devices = {device("Speakers", "ALSA", false)};
    facts.output = facts.devices.front();
    facts.libraries = {library("libsndfile", "1.2.0", "/lib/libsndfile.so.1", ""),
                       library("PortAudio", "19.6.0", "/lib/libportaudio.so.2", "ALSA, OSS"),
                       library("libffi", "", "/lib/libffi.so.8", "")};
    facts.isHardwareRead = true;
    facts.servers = {{"PipeWire", "pipewire-alsa", true, true},
                     {"PulseAudio", "libasound2-plugins", false, true}};
    facts.variables = {{"KVX_AUDIO_CAPTURE", "a.wav"}, {"JACK_DEFAULT_SERVER", std::nullopt}};
    facts.priorityLimit = 95;
    facts.isRealTimeAllowed = true;
    facts.lockedBytesLimit = unlimited;
    facts.cards = {"/dev/snd/pcmC0D0p"};
    facts.user = "ann";
    facts.isInAudioGroup = true;
    return facts;
}

std::string textOf(const SystemFacts& facts)
{
    std::string text;
    for (const kvx::Check& check : kvx::checksOf(facts)) text += formatCheck(check) + "\n";
    return text;
}

/// The lines of `text` that are not lines of `former`.
std::string newLines(const std::string& text, const std::string& former)
{
    std::string result;
    std::size_t at = 0;
    for (std::size_t end; (end = text.find('\n', at)) != text.npos; at = end + 1) {
        const std::string line = text.substr(at, end + 1 - at);
        if (("\n" + former).find("\n" + line) == std::string::npos) result += line;
    }
    return result;
}

TEST(Checks, PrintALineForEachFactOfAGoodSystem)
{
    EXPECT_EQ(textOf(goodFacts()),
              "ok       output                `kvx play` plays to Speakers\n"
              "ok       device 0              Speakers (ALSA): 48000 Hz, 2 out, 0 in\n"
              "ok       KVXAudio.so           loads from /k/KVXAudio.so\n"
              "ok       libsndfile            1.2.0 in /lib/libsndfile.so.1\n"
              "ok       PortAudio             19.6.0 in /lib/libportaudio.so.2; systems: ALSA, OSS\n"
              "ok       libffi                reports no version, in /lib/libffi.so.8\n"
              "ok       JACK server           is not running\n"
              "ok       PipeWire              is running, and ALSA has a plug-in for it\n"
              "ok       PulseAudio            is not running\n"
              "ok       KVX_AUDIO_CAPTURE     \"a.wav\"\n"
              "ok       JACK_DEFAULT_SERVER   is not set\n"
              "ok       sound card            /dev/snd/pcmC0D0p can be opened; ann is in the group audio\n"
              "ok       real time             SCHED_FIFO of priority 10 is allowed (RLIMIT_RTPRIO 95)\n"
              "ok       locked memory         unlimited (RLIMIT_MEMLOCK)\n");
    EXPECT_TRUE(canPlay(goodFacts()));
}

TEST(Checks, NameEachProblemAndWhatHelps)
{
    const std::string limits =
        "; run `sudo dpkg-reconfigure -p high jackd2`, answer yes, run `sudo adduser ann "
        "audio`, and log in again\n";
    const struct {
        void (*change)(SystemFacts&);
        std::string lines;
        bool canPlay;
    } facts[] = {
        {[](SystemFacts& f) { f.pluginError = "/k/KVXAudio.so cannot be loaded; build it"; },
         "problem  KVXAudio.so           /k/KVXAudio.so cannot be loaded; build it\n", false},
        {[](SystemFacts& f) {
             f.output.reset();
             f.outputError = "there is no output device \"x\"; name another one";
         },
         "problem  output                there is no output device \"x\"; name another one\n", false},
        {[](SystemFacts& f) {
             f.output = device("Simulated Device", "simulated", true);
             f.isOutputFallback = true;
         },
         "problem  output                no sound hardware opens, so nothing is audible; start a server "
         "with `jackd -d alsa`; `kvx play --device simulated` plays without hardware\n",
         false},
        {[](SystemFacts& f) {
             f.output = device("Simulated Device", "simulated", true);
             f.isOutputFallback = true;
             f.cards.clear();
         },
         "problem  output                no sound hardware opens, so nothing is audible; connect a sound "
         "card; `kvx play --device simulated` plays without hardware\n"
         "problem  sound cards           none in /dev/snd; ann is in the group audio; connect a sound card\n",
         false},
        {[](SystemFacts& f) {
             f.variables = {{"JACK_DEFAULT_SERVER", "studio"}};
             f.cards.clear();
         },
         "problem  JACK server           JACK_DEFAULT_SERVER is set, but no server studio runs; unset the "
         "variable\n"
         "ok       JACK_DEFAULT_SERVER   \"studio\"\n"
         "ok       sound cards           none in /dev/snd; ann is in the group audio\n",
         true},
        {[](SystemFacts& f) { f.output->isAlive = f.devices.front().isAlive = 0; },
         "problem  device 0              Speakers (ALSA): 48000 Hz, 2 out, 0 in; disconnected; connect the "
         "device "
         "again\n",
         false},
        {[](SystemFacts& f) {
             f.variables = {{"JACK_DEFAULT_SERVER", "studio"}};
         },
         "problem  JACK server           JACK_DEFAULT_SERVER is set, but no server studio runs; start it "
         "with "
         "`jackd -n studio -d alsa`, or unset the variable\n"
         "ok       JACK_DEFAULT_SERVER   \"studio\"\n",
         true},
        {[](SystemFacts& f) { f.servers.front().isReachable = false; },
         std::string(
             "problem  PipeWire              is running, but ALSA has no plug-in for it; run `sudo apt-get "
             "install pipewire-alsa") +
             ARCHITECTURE + "`\n",
         true},
        {[](SystemFacts& f) {
             f.isJackRunning = true;
             f.isRealTimeAllowed = false;
             f.priorityLimit = 9;
         },
         "ok       JACK server           is running\n"
         "problem  real time             SCHED_FIFO of priority 10 is refused (RLIMIT_RTPRIO 9), so a busy "
         "machine "
         "may cause gaps" +
             limits,
         true},
        {[](SystemFacts& f) {
             f.variables = {{"JACK_DEFAULT_SERVER", "studio"}};
             f.isJackRunning = true;
             f.lockedBytesLimit = (128 << 20) - 1;
         },
         "ok       JACK server           is running\n"
         "ok       JACK_DEFAULT_SERVER   \"studio\"\n"
         "problem  locked memory         127 MiB (RLIMIT_MEMLOCK), too little for a client of JACK" +
             limits,
         true},
        {[](SystemFacts& f) {
             f.closedCards = f.cards;
             f.isInAudioGroup = false;
         },
         "problem  sound card            /dev/snd/pcmC0D0p cannot be opened; ann is not in the group audio; "
         "run "
         "`sudo adduser ann audio`, and log in again\n",
         true},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.lines);
        SystemFacts changed = goodFacts();
        fact.change(changed);
        EXPECT_EQ(newLines(textOf(changed), textOf(goodFacts())), fact.lines);
        EXPECT_EQ(canPlay(changed), fact.canPlay);
    }
}

TEST(Checks, AcceptASystemThatNeedsNoHardware)
{
    const struct {
        void (*change)(SystemFacts&);
        std::string lines;
    } facts[] = {
        {[](SystemFacts& f) { f.output = device("Simulated Device", "simulated", true); },
         "ok       output                `kvx play` plays to Simulated Device\n"},
        {[](SystemFacts& f) {
             f.isHardwareRead = false;
             f.variables = {{"JACK_DEFAULT_SERVER", "studio"}};
         },
         "ok       JACK server           was not searched for, because KVX_AUDIO_DEVICE is simulated\n"
         "ok       JACK_DEFAULT_SERVER   \"studio\"\n"},
        {[](SystemFacts& f) { f.isJackRunning = true; }, "ok       JACK server           is running\n"},
        {[](SystemFacts& f) { f.cards.clear(); },
         "ok       sound cards           none in /dev/snd; ann is in the group audio\n"},
        {[](SystemFacts& f) { f.isRealTimeAllowed = false; },
         "ok       real time             SCHED_FIFO of priority 10 is refused (RLIMIT_RTPRIO 95); only JACK "
         "needs it\n"},
        {[](SystemFacts& f) { f.lockedBytesLimit = (128 << 20) - 1; },
         "ok       locked memory         127 MiB (RLIMIT_MEMLOCK), too little for a client of JACK\n"},
        {[](SystemFacts& f) { f.lockedBytesLimit = 128 << 20; },
         "ok       locked memory         128 MiB (RLIMIT_MEMLOCK)\n"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.lines);
        SystemFacts changed = goodFacts();
        fact.change(changed);
        EXPECT_EQ(newLines(textOf(changed), textOf(goodFacts())), fact.lines);
        EXPECT_TRUE(canPlay(changed));
    }
}

TEST(Checks, ReplaceControlCharacters)
{
    EXPECT_EQ(kvx::formatCheck({"output", true, "plays to \x1b[31mRed", ""}),
              "ok       output                plays to ?[31mRed");
}

} // namespace
