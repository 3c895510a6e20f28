// The devices as a table and as JSON.
#pragma once

#include "host/kvx/devices/device_facts.h"

#include <string>

namespace kvx {

/// `width` as in layOutTable. The first column is the row that `kvx play --device` and `kvx get` take.
std::string deviceTable(const std::vector<DeviceFacts>& devices, const Roles& roles, std::size_t width);

/// An array of objects, in the same order.
std::string deviceJson(const std::vector<DeviceFacts>& devices, const Roles& roles);

/// "1000-768000", or "44100 48000".
std::string printRates(const std::vector<ValueRange>& rates);

} // namespace kvx
