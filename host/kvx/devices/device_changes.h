// What happened to the devices between two looks, in words.
#pragma once

#include "host/kvx/devices/device_facts.h"

#include <functional>
#include <string>
#include <vector>

namespace kvx {

/// "Desk Speakers (id 7)"
std::string printDevice(const DeviceFacts& device);

/// A line for each difference; both are the same device. Nothing where there is none.
std::vector<std::string> changesOfDevice(const DeviceFacts& before, const DeviceFacts& after);

/// A line for each role that moved. `nameOf` knows the devices of both moments.
std::vector<std::string> changesOfRoles(const Roles& before, const Roles& after,
                                        const std::function<std::string(ObjectID)>& nameOf);

std::string printArrival(const DeviceFacts& device);
std::string printDeparture(const DeviceFacts& device);

} // namespace kvx
