// Where the platform's C functions begin: no exception leaves them.
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <exception>

namespace kvxplatform::hal {

/// What `body` answers; 'what' if memory or threads run out on the way.
template <class Body>
OSStatus withinBorder(Body body) noexcept
try {
    return body();
} catch (const std::exception&) {
    return kAudioHardwareUnspecifiedError;
}

} // namespace kvxplatform::hal
