// Misuses: the errors of the plug-in, as sentences for the program.
// All functions: [any].
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace host {

/// State of the current host. `lock` protects the sentences.
struct Misuses {
    std::mutex lock;
    std::vector<std::string> sentences;
};

/// Append a sentence to the current host's misuses. Does nothing without a host.
void noteMisuse(std::string sentence);

} // namespace host
