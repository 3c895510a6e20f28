// The library's class of the sound component, as this program uses it: the component is registered, and an
// output unit plays what its clients send.
#pragma once

#include "host/runtime/host.h"

#include <cstdint>

namespace kvx {

/// What it registers, beside its type: two codes of four characters.
constexpr std::uint32_t bridgeSubType = 'QTso', bridgeManufacturer = 'QTso';

/// While one lives, the component is there to be found; clients close what they opened before it goes. [main]
class SoundBridge {
public:
    /// Register the component, and attach it to the default output unit. Throws Failure.
    explicit SoundBridge(host::Host& host);
    ~SoundBridge();
    SoundBridge(const SoundBridge&) = delete;
    SoundBridge& operator=(const SoundBridge&) = delete;

    /// Let the unit play: silence, while no client does. Throws Failure.
    void start();

    /// Whether a client has a source playing, as far as the class knows.
    bool isActive() const { return object_.get("IsStreamActive").boolean(); }

private:
    void check(const char* what, const host::Value& status) const;
    void attachUnit();
    void end();

    host::Object object_;
    host::Object units_; // of the class that closes units
    std::int64_t unit_ = 0;
};

} // namespace kvx
