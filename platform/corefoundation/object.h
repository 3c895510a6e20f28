// The base of every reference-counted value. Callers hold a pointer to it.
#pragma once

#include "platform/support/live_count.h"

#include <CoreFoundation/CFBase.h>

#include <atomic>

namespace kvxplatform::corefoundation {

struct Object;

/// One kind of value.
struct Kind {
    LiveCount liveCount;      ///< of values not yet released
    void (*destroy)(Object*); ///< frees the value
};

/// Counted in its kind's live count. Starts with one reference, the creator's.
struct Object {
    explicit Object(Kind& ofKind);
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object();

    Kind& kind;
    std::atomic<CFIndex> references{1};
};

} // namespace kvxplatform::corefoundation
