// The levels of one bus, before and behind its fader, measured by an audio thread and read by any.
#pragma once

#include "platform/audiounit/mixer/level_meter.h"

#include <array>
#include <atomic>
#include <vector>

namespace kvxplatform::audiounit {

constexpr UInt32 meteredChannels = 64; // of a bus; what lies behind them is not measured
constexpr Float32 silentLevel = -120;  // decibels; no level reads lower
constexpr Float32 loudestLevel = 120;  // nor higher

/// What is told of a channel, in the order of the parameters.
enum class Level : UInt32 { preAverage, prePeak, postAverage, postPeak };
constexpr UInt32 levelCount = 4;

enum class Stage { preFader, postFader };

class BusMeters {
public:
    /// Throws std::bad_alloc. While no slice runs.
    void prepare(UInt32 channels, Float64 sampleRate);

    /// Thread [any].
    void turn(bool isOn);
    bool isTurnedOn() const { return isOn.load(std::memory_order_relaxed); }

    /// In decibels; silentLevel while turned off, and until the first slice. Thread [any].
    Float32 level(Level which, UInt32 channel) const;

    // [audio & in a slice], in this order; nothing is done while turned off

    void begin(bool forgetsPast);
    void measure(Stage stage, const AudioBufferList& list, UInt32 frames);
    void measureSilence(UInt32 frames); // at both stages
    void publish();

private:
    void silence();

    std::vector<LevelMeter> meters[2]; // of each stage, one a channel
    bool measures = false;             // in this slice

    std::atomic<bool> isOn{false};
    std::array<std::atomic<Float32>, levelCount * meteredChannels> published{}; // power or amplitude
};

} // namespace kvxplatform::audiounit
