// Loads the library into a host for one command, and reports leaks at the end.
// All functions: [main].
#pragma once

#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

#include <string>
#include <vector>

namespace kvx {

struct LibraryOptions {
    std::string path;            ///< path of the library; empty: KVXAudio.so in the folder of this program
    double hostVersion = 2016.0; ///< host version that the library sees
    bool isDevelopment = false;  ///< true: the host reports that it is the development environment
};

/// A host that has loaded the library.
class Library {
public:
    /// Errors  throws host::LoadError.
    explicit Library(const LibraryOptions& options);

    host::Host& host() { return host_; }

    /// List the leaks once the command has released all its objects: host values, platform objects, and the
    /// library's misuses of the host. Platform objects in `expected` are not leaks.
    /// Returns  one line per leak; "" without leaks.
    std::string leaks(const std::vector<KVXLiveCount>& expected = {}) const;

private:
    host::Host host_;
};

/// Print the leaks to stderr.
/// Returns  `exitCode`, or 1 if there are leaks and `exitCode` is 0.
int reportLeaks(const Library& library, int exitCode, const std::vector<KVXLiveCount>& expected = {});

} // namespace kvx
