// The commands `kvx classes` and `kvx devices`, which list classes of the library and audio devices as text
// or JSON.
// All functions: [main].
#pragma once

#include "host/kvx/devices/device_facts.h"
#include "host/kvx/library/library.h"

#include <string>
#include <vector>

namespace kvx {

struct ClassesOptions {
    std::string name; ///< name of the one class to print; empty: all classes
    bool isJson = false;
    LibraryOptions library;
};

struct DevicesOptions {
    bool isJson = false;
    bool isWatching = false;
    double demoSeconds = 0; ///< seconds between two steps of the demonstration; 0: no demonstration
    LibraryOptions library;
};

/// Print the classes that the library registered.
/// Returns  the exit code.
/// Errors   throws Failure.
int runClasses(const ClassesOptions& options);

/// Print the devices. If `isWatching` is set, then print each change of a device until Ctrl-C.
/// Returns  the exit code.
/// Errors   throws Failure.
int runDevices(const DevicesOptions& options);

/// Format the devices as a JSON array of objects, in the order of the system's device list.
std::string deviceJson(const std::vector<DeviceFacts>& devices, const Roles& roles);

} // namespace kvx
