// The base class of every reference-counted value. Callers hold pointers to the values.
#pragma once

#include "platform/support/live_count.h"

#include <CoreFoundation/CFBase.h>

#include <atomic>

namespace kvxplatform::corefoundation {

struct Object;

/// A kind of reference-counted value, such as strings or URLs.
struct Kind {
    LiveCount liveCount;      ///< number of values that are not yet freed
    void (*destroy)(Object*); ///< frees a value of this kind
};

/// A reference-counted value. The live count of its kind includes the value. The creator owns the first
/// reference.
struct Object {
    explicit Object(Kind& ofKind);
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object();

    Kind& kind;
    std::atomic<CFIndex> references{1};
};

} // namespace kvxplatform::corefoundation
