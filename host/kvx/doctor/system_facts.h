// Reads what playback depends on: libraries, devices, sound servers, environment variables, limits, and
// access to sound cards.
#pragma once

#include "host/kvx/devices/output_device.h"
#include "host/kvx/library/library.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// A sound server that ALSA programs reach through a plug-in of ALSA.
struct ServerOfUser {
    std::string name;
    std::string package;      ///< name of the Debian package with the plug-in of ALSA
    bool isRunning = false;   ///< whether the socket of the server exists
    bool isReachable = false; ///< whether ALSA has the plug-in for this server
};

/// An environment variable that changes the devices; no value: not set.
struct Variable {
    std::string name;
    std::optional<std::string> value;
};

/// The facts that checksOf() assesses. Texts that name an error are empty without an error.
struct SystemFacts {
    std::string pluginPath, pluginError; ///< file of the library; why it cannot be loaded
    std::vector<KVXLibraryInfo> libraries;

    std::vector<KVXDeviceInfo> devices;
    std::optional<KVXDeviceInfo> output; ///< the device on which `kvx play` plays
    bool isOutputFallback = false;       ///< whether `output` is simulated because no hardware opens
    std::string outputError;             ///< why there is no `output`

    bool isHardwareRead = false;       ///< false: KVX_AUDIO_DEVICE=simulated leaves the hardware closed
    bool isJackRunning = false;        ///< whether PortAudio is connected to a JACK server
    std::vector<ServerOfUser> servers; ///< PipeWire and PulseAudio
    std::vector<Variable> variables;

    std::uint64_t priorityLimit = 0;    ///< highest real-time priority without privileges
    bool isRealTimeAllowed = false;     ///< whether SCHED_FIFO of triedPriority was granted
    std::uint64_t lockedBytesLimit = 0; ///< most bytes of memory that may be locked; UINT64_MAX: no limit

    std::vector<std::string> cards;       ///< output devices of sound cards: /dev/snd/pcmC0D0p, …
    std::vector<std::string> closedCards; ///< those of `cards` that this user may not read and write
    std::string user;                     ///< name of this user
    bool isInAudioGroup = false;
};

constexpr int triedPriority = 10; // the priority that JACK servers use

/// Read the facts. The call starts the sound system, as `kvx play` does.
/// [main]
SystemFacts readSystemFacts(const LibraryOptions& options);

} // namespace kvx
