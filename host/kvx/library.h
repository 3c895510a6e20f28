// The library under a host, for the length of a command.
#pragma once

#include "host/runtime/host.h"

#include <CLI/CLI.hpp>
#include <KVXPlatform/KVXPlatform.h>

#include <string>
#include <vector>

namespace kvx {

struct LibraryOptions {
    std::string path; ///< empty: KVXAudio.so beside this program
    double hostVersion = 2016.0;
    bool isDevelopment = false; ///< answer as the development environment does, not as a built program
};

/// `--library` and `--host-version`, for every command that loads it.
void addLibraryOptions(CLI::App& command, LibraryOptions& options);

/// A host with the library loaded. Throws host::LoadError. [main]
class Library {
public:
    explicit Library(const LibraryOptions& options);

    host::Host& host() { return host_; }

    /// What is left over once every object of the command is gone: values of the host, objects of the
    /// platform, and the library's misuses of the host. A line each; empty when clean. `kept`: objects of the
    /// platform that are meant to stay.
    std::string leftOver(const std::vector<KVXLiveCount>& kept = {}) const;

private:
    host::Host host_;
};

/// Print what is left over on stderr. Returns `exitCode`, or 1 in place of 0 when there was something.
int closeLibrary(const Library& library, int exitCode, const std::vector<KVXLiveCount>& kept = {});

} // namespace kvx
