// The play method `classic`: this command plays a file through the library's sound component, as a classic
// sound program does.
#pragma once

#include "host/kvx/play/playlist.h"
#include "host/kvx/play/session.h"
#include "host/runtime/host.h"
#include "host/soundclient/sample_bytes.h"

#include <cstdint>

namespace kvx {

/// Subtype and manufacturer of the sound component that the library registers.
constexpr std::uint32_t componentSubType = 'QTso', componentManufacturer = 'QTso';

/// Registers the library's sound component through the class QTSoundStreamKVX. While an object exists, an
/// output unit plays the sound that clients send to the component. Each client must close the component
/// before the object is destroyed.
/// [main]
class SoundComponent {
public:
    /// Register the component, and attach it to the default output unit.
    /// Errors  throws Failure.
    explicit SoundComponent(host::Host& host);
    ~SoundComponent();
    SoundComponent(const SoundComponent&) = delete;
    SoundComponent& operator=(const SoundComponent&) = delete;

    /// Start the output unit, which plays silence until a client plays.
    /// Errors  throws Failure.
    void start();

    /// Whether the class reports that a client plays sound.
    bool isActive() const { return object_.get("IsStreamActive").boolean(); }

private:
    void check(const char* what, const host::Value& status) const;
    void attachUnit();
    void end();

    host::Object object_;
    host::Object units_;    // an object of the class with the methods that close the unit
    std::int64_t unit_ = 0; // handle of the output unit; 0: no unit
};

/// Play a file until the end, or until a key or a signal of the user ends playback. `gain` is a factor.
/// Errors  throws Failure.
/// [main]
void playClassic(host::Host& host, const PlaylistFile& file, float gain, soundclient::Labelling labelling,
                 Session& session);

} // namespace kvx
