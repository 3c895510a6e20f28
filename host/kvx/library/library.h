// Loads the library into a host (host/runtime/) for one command, and reports leaks at the end of the command.
// All functions: [main].
#pragma once

#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

#include <string>
#include <vector>

namespace kvx {

struct LibraryOptions {
    std::string path;            ///< path of the library; empty: KVXAudio.so in the folder of the command kvx
    double hostVersion = 2016.0; ///< version that the host reports to the library
    bool isDevelopment = false;  ///< true: the host reports that it is the development environment
};

/// The path of the library to load.
std::string pathOfLibrary(const LibraryOptions& options);

/// List the libraries that the platform has loaded, with their versions.
std::vector<KVXLibraryInfo> loadedLibraries();

/// A host that has loaded the library.
class Library {
public:
    /// Create the host, and load the library.
    /// Errors  throws host::LoadError.
    explicit Library(const LibraryOptions& options);

    host::Host& host() { return host_; }

    /// List what the library still holds, except `expected` (host values and platform objects), and its wrong
    /// calls of host functions. Call after the command has released its objects.
    /// Returns  one line per kind of leak or per wrong call; "" if there are none.
    std::string leaks(const std::vector<KVXLiveCount>& expected = {}) const;

private:
    host::Host host_;
};

/// Print the list of Library::leaks() to stderr.
/// Returns  `exitCode`, or 1 if the list is not empty and `exitCode` is 0.
int reportLeaks(const Library& library, int exitCode, const std::vector<KVXLiveCount>& expected = {});

} // namespace kvx
