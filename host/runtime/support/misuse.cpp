#include "host/runtime/support/misuse.h"

#include "host/runtime/support/per_host.h"

#include <utility>

namespace host {

void noteMisuse(std::string sentence)
{
    auto* misuses = stateOrNull<Misuses>();
    if (!misuses) return;
    const std::lock_guard<std::mutex> guard(misuses->lock);
    misuses->sentences.push_back(std::move(sentence));
}

} // namespace host
