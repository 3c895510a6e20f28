// Misuses: the plug-in's errors in its use of the host, one sentence each.
// All functions: [any].
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace host {

/// The misuses of the current host's plug-in. `lock` protects `sentences`.
struct Misuses {
    std::mutex lock;
    std::vector<std::string> sentences;
};

/// Append a sentence to the current host's misuses. Has no effect if no host exists.
void noteMisuse(std::string sentence);

} // namespace host
