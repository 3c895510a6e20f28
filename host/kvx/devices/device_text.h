// Devices and their changes as text.
// All functions: [any].
#pragma once

#include "host/kvx/devices/device_facts.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace kvx {

/// The devices as a table. The first column is the row number that `kvx play --device` and `kvx get` take.
/// Shape  `width` as in layOutTable().
std::string deviceTable(const std::vector<DeviceFacts>& devices, const Roles& roles, std::size_t width);

/// Print rates in Hz: "1000-768000", or "44100 48000".
std::string formatRates(const std::vector<ValueRange>& rates);

/// Print name and ID: "Desk Speakers (id 7)".
std::string formatDevice(const DeviceFacts& device);

std::string formatArrival(const DeviceFacts& device);
std::string formatDeparture(const DeviceFacts& device);

/// One line per difference between two states of one device.
std::vector<std::string> changesOfDevice(const DeviceFacts& before, const DeviceFacts& after);

/// One line per role that moved to another device. `nameOf` returns the name of any device in `before` and
/// `after`, and of 0.
std::vector<std::string> changesOfRoles(const Roles& before, const Roles& after,
                                        const std::function<std::string(ObjectID)>& nameOf);

} // namespace kvx
