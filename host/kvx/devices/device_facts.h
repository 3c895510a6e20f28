// What the library tells of each device.
#pragma once

#include "host/kvx/library/audio_records.h"
#include "host/kvx/library/core_audio.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kvx {

/// Texts are UTF-8 as the library gave them. What a device does not tell is 0 or empty.
struct DeviceFacts {
    ObjectID id = 0;
    std::string name, maker, uid;
    std::uint32_t inputs = 0, outputs = 0; ///< channels
    double rate = 0;                       ///< Hz
    std::vector<ValueRange> rates;         ///< Hz, on offer
    std::uint32_t slice = 0;               ///< frames
    std::uint32_t latency = 0;             ///< frames; of the output, where there is one
    bool isAlive = false;
    bool isRunning = false;
    std::map<std::uint32_t, float> volumes; ///< by output channel from 1 (0 the whole), where it can be set
    std::map<std::uint32_t, bool> mutes;    ///< likewise
};

/// The devices with a role; 0 where there is none.
struct Roles {
    ObjectID output = 0, systemOutput = 0, input = 0;
};

/// In the order of the list. Throws Failure when it cannot be read.
std::vector<ObjectID> readDeviceList(const CoreAudio& core);

/// Nothing when there is no such device any more.
std::optional<DeviceFacts> readDeviceFacts(const CoreAudio& core, ObjectID device);

/// All that are listed, in order. Throws Failure when there is none: simulated devices always exist.
std::vector<DeviceFacts> readAllDevices(const CoreAudio& core);

Roles readRoles(const CoreAudio& core);

} // namespace kvx
