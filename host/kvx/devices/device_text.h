// Formats devices, and changes of devices, as text.
// All functions: [any].
#pragma once

#include "host/kvx/devices/device_facts.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace kvx {

/// Format the devices as a table. The first column is the row number, by which the user names a device.
/// Shape  `width` as in layOutTable().
std::string deviceTable(const std::vector<DeviceFacts>& devices, const Roles& roles, std::size_t width);

/// Format sample rates in Hz: "1000-768000", or "44100 48000".
std::string formatRates(const std::vector<ValueRange>& rates);

/// Format name and ID of a device: "Desk Speakers (id 7)".
std::string formatDevice(const DeviceFacts& device);

/// Format a line that reports a new or a removed device, such as "Desk Speakers (id 7): went".
std::string formatArrival(const DeviceFacts& device);
std::string formatDeparture(const DeviceFacts& device);

/// List the differences between two states of one device, one line per difference.
std::vector<std::string> changesOfDevice(const DeviceFacts& before, const DeviceFacts& after);

/// List the roles (such as default output) that moved to another device, one line per role. `nameOf` must
/// return a name for each device in `before` and `after`, and for the ID 0.
std::vector<std::string> changesOfRoles(const Roles& before, const Roles& after,
                                        const std::function<std::string(ObjectID)>& nameOf);

} // namespace kvx
