#include "host/kvx/doctor/system_facts.h"

#include "host/runtime/support/errors.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <grp.h>
#include <limits>
#include <pwd.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kvx {
namespace {

namespace fs = std::filesystem;

constexpr const char* variableNames[] = {"KVX_AUDIO_DEVICE", "KVX_AUDIO_CAPTURE", "JACK_DEFAULT_SERVER",
                                         "JACK_NO_START_SERVER"};

// clang-format off
constexpr struct {
    const char* name;
    const char* socket; ///< in the user's run-time folder
    const char* plugin; ///< in ALSA's folder of plug-ins
    const char* package;
} serversOfUsers[] = {
    {"PipeWire",   "pipewire-0",   "libasound_module_pcm_pipewire.so", "pipewire-alsa"},
    {"PulseAudio", "pulse/native", "libasound_module_pcm_pulse.so",    "libasound2-plugins"},
};
// clang-format on

std::optional<std::string> valueOf(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

const KVXLibraryInfo* findLibrary(const SystemFacts& facts, const std::string& name)
{
    const auto found = std::find_if(facts.libraries.begin(), facts.libraries.end(),
                                    [&](const auto& each) { return each.name == name; });
    return found == facts.libraries.end() ? nullptr : &*found;
}

void readPlugin(SystemFacts& facts, const LibraryOptions& options)
{
    facts.pluginPath = pathOfLibrary(options);
    try {
        const Library library(options);
    } catch (const host::LoadError& error) {
        facts.pluginError = error.what();
    }
}

void readDevices(SystemFacts& facts)
{
    try {
        facts.output = chooseDevice({});
        facts.isOutputFallback = isFallback(*facts.output, {});
    } catch (const Failure& error) {
        facts.outputError = error.what();
    }
    facts.devices = listDevices();
}

void readServers(SystemFacts& facts)
{
    // PortAudio has the system of JACK only if it is connected to a server.
    const KVXLibraryInfo* const portAudio = findLibrary(facts, "PortAudio");
    const std::string systems = portAudio ? portAudio->systems : "";
    facts.isHardwareRead = !systems.empty();
    facts.isJackRunning = systems.find("JACK") != systems.npos;

    const fs::path runTime = valueOf("XDG_RUNTIME_DIR").value_or("");
    const KVXLibraryInfo* const alsa = findLibrary(facts, "ALSA");
    const fs::path plugins = fs::path(alsa ? alsa->path : "").parent_path() / "alsa-lib";
    std::error_code ignored;
    for (const auto& each : serversOfUsers)
        facts.servers.push_back({each.name, each.package,
                                 !runTime.empty() && fs::exists(runTime / each.socket, ignored),
                                 fs::exists(plugins / each.plugin, ignored)});
}

bool tryRealTime()
{
    sched_param parameters = {};
    parameters.sched_priority = triedPriority;
    if (sched_setscheduler(0, SCHED_FIFO, &parameters) != 0) return false;
    parameters.sched_priority = 0;
    sched_setscheduler(0, SCHED_OTHER, &parameters);
    return true;
}

std::uint64_t limitOf(decltype(RLIMIT_RTPRIO) resource)
{
    rlimit limit = {};
    getrlimit(resource, &limit);
    return limit.rlim_cur == RLIM_INFINITY ? std::numeric_limits<std::uint64_t>::max() : limit.rlim_cur;
}

void readCards(SystemFacts& facts)
{
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/dev/snd", ignored)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("pcmC", 0) == 0 && name.back() == 'p') facts.cards.push_back(entry.path().string());
    }
    std::sort(facts.cards.begin(), facts.cards.end());
    for (const std::string& card : facts.cards)
        if (access(card.c_str(), R_OK | W_OK) != 0) facts.closedCards.push_back(card);
}

void readUser(SystemFacts& facts)
{
    const passwd* const user = getpwuid(getuid());
    facts.user = user ? user->pw_name : std::to_string(getuid());
    const group* const audio = getgrnam("audio");
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(0, getgroups(0, nullptr))));
    groups.resize(
        static_cast<std::size_t>(std::max(0, getgroups(static_cast<int>(groups.size()), groups.data()))));
    groups.push_back(getegid());
    facts.isInAudioGroup = audio && std::count(groups.begin(), groups.end(), audio->gr_gid) > 0;
}

} // namespace

SystemFacts readSystemFacts(const LibraryOptions& options)
{
    SystemFacts facts;
    for (const char* name : variableNames) facts.variables.push_back({name, valueOf(name)});
    readDevices(facts);
    facts.libraries = loadedLibraries(); // after the devices, so that PortAudio's systems are known
    readPlugin(facts, options);
    readServers(facts);
    facts.priorityLimit = limitOf(RLIMIT_RTPRIO);
    facts.lockedBytesLimit = limitOf(RLIMIT_MEMLOCK);
    facts.isRealTimeAllowed = tryRealTime();
    readCards(facts);
    readUser(facts);
    return facts;
}

} // namespace kvx
