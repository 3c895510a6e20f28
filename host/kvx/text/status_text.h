// Statuses of the platform in words.
#pragma once

#include "host/kvx/text/four_characters.h"

#include <cstdint>
#include <string>

namespace kvx {

using Status = std::int32_t;

constexpr Status unknownProperty = 'who?';

/// One known status and what it means.
struct StatusFact {
    Status status;
    const char* meaning; ///< half a sentence
};

/// The whole table: [first, first + count).
struct StatusFacts {
    const StatusFact* first;
    std::size_t count;
};
StatusFacts statusFacts();

/// "'who?' (2003332927): the object has no such property …"
std::string printStatus(Status status);

} // namespace kvx
