// kvx classes and kvx devices: what the library has, as text and as JSON.
// All functions: [main].
#pragma once

#include "host/kvx/devices/device_facts.h"
#include "host/kvx/library/library.h"

#include <string>
#include <vector>

namespace kvx {

struct ClassesOptions {
    std::string name; ///< name of one class; empty: all classes
    bool isJson = false;
    LibraryOptions library;
};

struct DevicesOptions {
    bool isJson = false;
    bool isWatching = false;
    double demoSeconds = 0; ///< seconds between two steps of the demo; 0: no demo
    LibraryOptions library;
};

/// Print the classes that the library registered.
/// Returns  the exit code.
/// Errors   throws Failure.
int classesCommand(const ClassesOptions& options);

/// Print the devices. With isWatching, also print each change until Ctrl-C.
/// Returns  the exit code.
/// Errors   throws Failure.
int devicesCommand(const DevicesOptions& options);

/// The devices as a JSON array of objects, in the order of the list.
std::string deviceJson(const std::vector<DeviceFacts>& devices, const Roles& roles);

} // namespace kvx
