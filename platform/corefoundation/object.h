// What every reference-counted value begins with. The pointer that callers hold points here.
#pragma once

#include "platform/support/live_count.h"

#include <CoreFoundation/CFBase.h>

#include <atomic>

namespace kvxplatform::corefoundation {

struct Object;

/// One kind of value.
struct Kind {
    LiveCount account;        ///< values that someone still has to release
    void (*destroy)(Object*); ///< frees the whole value
};

/// Stands in its kind's account. Begins with one reference, its creator's.
struct Object {
    explicit Object(Kind& ofKind);
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object();

    Kind& kind;
    std::atomic<CFIndex> references{1};
};

} // namespace kvxplatform::corefoundation
