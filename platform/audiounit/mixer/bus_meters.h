// The levels of one bus, before and after its fader: measured by a render thread, read by any thread.
#pragma once

#include "platform/audiounit/mixer/level_meter.h"

#include <array>
#include <atomic>
#include <vector>

namespace kvxplatform::audiounit {

constexpr UInt32 meteredChannels = 64; ///< of a bus; later channels are not measured
constexpr Float32 minDecibels = -120;  ///< the level of silence
constexpr Float32 maxDecibels = 120;

/// The levels of a channel, in the order of the parameters.
enum class Level : UInt32 { preAverage, prePeak, postAverage, postPeak };
constexpr UInt32 levelCount = 4;

enum class Stage { preFader, postFader };

class BusMeters {
public:
    /// Throws std::bad_alloc.
    /// [any & stopped]
    void prepare(UInt32 channels, Float64 sampleRate);

    /// [any]
    void setEnabled(bool isEnabled);
    bool isEnabled() const { return isEnabled_.load(std::memory_order_relaxed); }

    /// The level in decibels; minDecibels while disabled and before the first slice.
    /// [any]
    Float32 level(Level which, UInt32 channel) const;

    // In each slice, in this order: begin(); measure() at both stages, or measureSilence() for both;
    // publish(). They do nothing while disabled: [audio & rendering].

    void begin(bool isReset);
    void measure(Stage stage, const AudioBufferList& list, UInt32 frames);
    void measureSilence(UInt32 frames);
    void publish();

private:
    void publishSilence();

    std::vector<LevelMeter> meters_[2]; ///< of each stage, one a channel
    bool isMeasuring_ = false;          ///< in this slice

    std::atomic<bool> isEnabled_{false};
    std::array<std::atomic<Float32>, levelCount * meteredChannels> levels_{}; ///< power or amplitude
};

} // namespace kvxplatform::audiounit
