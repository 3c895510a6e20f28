// What every reference-counted value begins with. The pointer that callers hold points here.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <atomic>
#include <cstdint>

namespace kvxplatform::corefoundation {

struct Object;

/// One kind of value.
struct Kind {
    const char* name;                ///< as accounts show it
    void (*destroy)(Object*);        ///< frees the whole value
    std::atomic<std::uint32_t> live; ///< values that someone still has to release
};

/// Counts itself in its kind. Begins with one reference, its creator's.
struct Object {
    explicit Object(Kind& ofKind);
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    ~Object();

    Kind& kind;
    std::atomic<CFIndex> references{1};
};

} // namespace kvxplatform::corefoundation
