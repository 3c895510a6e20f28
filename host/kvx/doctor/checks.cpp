#include "host/kvx/doctor/checks.h"

#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

namespace kvx {
namespace {

using Checks = std::vector<Check>;

// The architecture suffix that Debian's package manager needs for packages of this program's architecture.
constexpr const char* packageSuffix = sizeof(void*) == 4 ? ":i386" : "";

constexpr std::uint64_t mebibyte = 1 << 20;
// A JACK client locks all of its memory, so the limit of 8 MiB that Debian sets is too low for a client.
constexpr std::uint64_t leastLockedBytes = 128 * mebibyte;

std::string limitsAdvice(const SystemFacts& facts)
{
    return fmt::format(
        "run `sudo dpkg-reconfigure -p high jackd2`, answer yes, run `sudo adduser {} audio`, and "
        "log in again",
        facts.user);
}

/// The name of the JACK server that JACK_DEFAULT_SERVER requests; "" if the variable requests none.
std::string requestedServer(const SystemFacts& facts)
{
    for (const Variable& variable : facts.variables)
        if (variable.name == "JACK_DEFAULT_SERVER") return variable.value.value_or("");
    return {};
}

void checkLibraries(const SystemFacts& facts, Checks& checks)
{
    checks.push_back(facts.pluginError.empty()
                         ? Check{"KVXAudio.so", true, fmt::format("loads from {}", facts.pluginPath), ""}
                         : Check{"KVXAudio.so", false, facts.pluginError, ""});
    for (const KVXLibraryInfo& library : facts.libraries) {
        const std::string file = *library.path ? library.path : "an unknown file";
        Check check{library.name, true,
                    *library.version ? fmt::format("{} in {}", library.version, file)
                                     : fmt::format("reports no version, in {}", file),
                    ""};
        if (*library.systems) check.finding += fmt::format("; systems: {}", library.systems);
        checks.push_back(check);
    }
}

void checkOutput(const SystemFacts& facts, Checks& checks)
{
    if (!facts.output)
        checks.push_back({"output", false, facts.outputError, ""});
    else if (facts.isOutputFallback)
        checks.push_back({"output", false, "no sound hardware opens, so nothing is audible",
                          std::string(facts.cards.empty() ? "connect a sound card"
                                                          : "start a server with `jackd -d alsa`") +
                              "; `kvx play --device simulated` plays without hardware"});
    else
        checks.push_back({"output", true, fmt::format("`kvx play` plays to {}", facts.output->name), ""});
}

void checkDevices(const SystemFacts& facts, Checks& checks)
{
    std::size_t row = 0;
    for (const KVXDeviceInfo& device : facts.devices) {
        const std::string subject = fmt::format("device {}", row++);
        const std::string text = fmt::format("{} ({}): {} Hz, {} out, {} in", device.name, device.system,
                                             device.sampleRate, device.outputChannels, device.inputChannels);
        if (device.isAlive)
            checks.push_back({subject, true, text, ""});
        else
            checks.push_back({subject, false, text + "; disconnected", "connect the device again"});
    }
}

void checkJack(const SystemFacts& facts, Checks& checks)
{
    const std::string requested = requestedServer(facts);
    if (facts.isJackRunning)
        checks.push_back({"JACK server", true, "is running", ""});
    else if (!facts.isHardwareRead)
        checks.push_back(
            {"JACK server", true, "was not searched for, because KVX_AUDIO_DEVICE is simulated", ""});
    else if (!requested.empty())
        checks.push_back(
            {"JACK server", false,
             fmt::format("JACK_DEFAULT_SERVER is set, but no server {} runs", requested),
             facts.cards.empty()
                 ? "unset the variable"
                 : fmt::format("start it with `jackd -n {} -d alsa`, or unset the variable", requested)});
    else
        checks.push_back({"JACK server", true, "is not running", ""});
}

void checkServers(const SystemFacts& facts, Checks& checks)
{
    checkJack(facts, checks);
    for (const ServerOfUser& server : facts.servers)
        if (!server.isRunning)
            checks.push_back({server.name, true, "is not running", ""});
        else if (server.isReachable)
            checks.push_back({server.name, true, "is running, and ALSA has a plug-in for it", ""});
        else
            checks.push_back({server.name, false, "is running, but ALSA has no plug-in for it",
                              fmt::format("run `sudo apt-get install {}{}`", server.package, packageSuffix)});
}

void checkVariables(const SystemFacts& facts, Checks& checks)
{
    for (const Variable& variable : facts.variables)
        checks.push_back({variable.name, true,
                          variable.value ? fmt::format("\"{}\"", *variable.value) : "is not set", ""});
}

void checkLimits(const SystemFacts& facts, Checks& checks)
{
    // Only clients of JACK need real-time priority and locked memory; other playback needs neither.
    const bool isNeeded = facts.isJackRunning || !requestedServer(facts).empty();
    const auto add = [&](const char* subject, bool isAllowed, const std::string& finding) {
        const bool isGood = isAllowed || !isNeeded;
        checks.push_back({subject, isGood, finding, isGood ? "" : limitsAdvice(facts)});
    };
    const char* const effect = isNeeded ? ", so a busy machine may cause gaps" : "; only JACK needs it";
    add("real time", facts.isRealTimeAllowed,
        fmt::format("SCHED_FIFO of priority {} is {} (RLIMIT_RTPRIO {}){}", triedPriority,
                    facts.isRealTimeAllowed ? "allowed" : "refused", facts.priorityLimit,
                    facts.isRealTimeAllowed ? "" : effect));

    const std::string limit = facts.lockedBytesLimit == std::numeric_limits<std::uint64_t>::max()
                                  ? "unlimited"
                                  : fmt::format("{} MiB", facts.lockedBytesLimit / mebibyte);
    const bool isEnough = facts.lockedBytesLimit >= leastLockedBytes;
    add("locked memory", isEnough,
        fmt::format("{} (RLIMIT_MEMLOCK){}", limit, isEnough ? "" : ", too little for a client of JACK"));
}

void checkCards(const SystemFacts& facts, Checks& checks)
{
    const std::string group =
        fmt::format("{} is {}in the group audio", facts.user, facts.isInAudioGroup ? "" : "not ");
    if (facts.cards.empty())
        checks.push_back({"sound cards", canPlay(facts), "none in /dev/snd; " + group,
                          canPlay(facts) ? "" : "connect a sound card"});
    for (const std::string& card : facts.cards) {
        const bool isClosed = std::count(facts.closedCards.begin(), facts.closedCards.end(), card) > 0;
        if (isClosed)
            checks.push_back({"sound card", false, fmt::format("{} cannot be opened; {}", card, group),
                              fmt::format("run `sudo adduser {} audio`, and log in again", facts.user)});
        else
            checks.push_back({"sound card", true, fmt::format("{} can be opened; {}", card, group), ""});
    }
}

} // namespace

std::vector<Check> checksOf(const SystemFacts& facts)
{
    Checks checks;
    for (const auto check :
         {checkOutput, checkDevices, checkLibraries, checkServers, checkVariables, checkCards, checkLimits})
        check(facts, checks);
    return checks;
}

bool canPlay(const SystemFacts& facts)
{
    return facts.pluginError.empty() && facts.output && !facts.isOutputFallback && facts.output->isAlive &&
           facts.output->outputChannels > 0;
}

std::string formatCheck(const Check& check)
{
    return plainText(fmt::format("{:<8} {:<21} {}{}{}", check.isGood ? "ok" : "problem", check.subject,
                                 check.finding, check.advice.empty() ? "" : "; ", check.advice));
}

} // namespace kvx
