// The levels of one bus, before and after its fader. A render thread measures them; any thread reads them.
#pragma once

#include "platform/audiounit/mixer/level_meter.h"

#include <array>
#include <atomic>
#include <vector>

namespace kvxplatform::audiounit {

constexpr UInt32 meteredChannels = 64; ///< largest number of measured channels per bus
constexpr Float32 minDecibels = -120;  ///< level of silence in decibels
constexpr Float32 maxDecibels = 120;

/// The levels of a channel, in the order of the parameters that report them.
enum class Level : UInt32 { preAverage, prePeak, postAverage, postPeak };
constexpr UInt32 levelCount = 4;

enum class Stage { preFader, postFader };

class BusMeters {
public:
    /// Make the meters of all channels. Throws std::bad_alloc.
    /// [any & stopped]
    void prepare(UInt32 channels, Float64 sampleRate);

    /// [any]
    void setEnabled(bool isEnabled);
    bool isEnabled() const { return isEnabled_.load(std::memory_order_relaxed); }

    /// Returns  a level in decibels; minDecibels while the meters are disabled and before the first slice.
    /// [any]
    Float32 level(Level which, UInt32 channel) const;

    // Each slice calls, in this order: begin(); measure() for both stages, or measureBoth() or
    // measureSilence(), which serve both; publish(). These functions do nothing while the meters are
    // disabled. All functions: [audio & rendering].

    void begin(bool isReset);
    void measure(Stage stage, const AudioBufferList& list, UInt32 frames);
    /// Measure samples that the fader does not change.
    void measureBoth(const AudioBufferList& list, UInt32 frames);
    void measureSilence(UInt32 frames);
    void publish();

private:
    void publishSilence();
    int distinctStages() const { return isEqual_ ? 1 : 2; }
    void measureAt(int stage, const AudioBufferList& list, UInt32 frames);

    std::vector<LevelMeter> meters_[2]; ///< one meter per channel, for each of the two stages
    /// Whether the fader has changed no sample since the last reset. Then the first stage's meters serve
    /// both.
    bool isEqual_ = true;
    bool isMeasuring_ = false; ///< whether the present slice is measured

    std::atomic<bool> isEnabled_{false};
    /// Published levels, as power or amplitude.
    std::array<std::atomic<Float32>, levelCount * meteredChannels> levels_{};
};

} // namespace kvxplatform::audiounit
