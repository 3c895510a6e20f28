// Rubber Band as a time stretcher, fed from the input history.
//
// Both modes use its finer engine, with all of its windows or a single one. Its faster engine allocates
// whenever the ratio changes, cannot stretch to less than about an eighth, and costs more than the single
// window.
#pragma once

#include "platform/audiounit/rate/rate_engine.h"

#include <rubberband/RubberBandStretcher.h>

#include <algorithm>
#include <vector>

namespace kvxplatform::audiounit {

// All functions but the constructor, latency() and tail(): [audio & rendering]. They allocate nothing.
class Stretcher {
public:
    enum class Mode { finer, faster };

    /// Throws std::bad_alloc.
    Stretcher(Float64 sampleRate, UInt32 channels, Mode mode);

    /// As RateEngine: forget the past; the next output frame corresponds to input frame `frame`.
    void start(std::int64_t frame, double ratio);
    std::int64_t leadIn(double ratio) const;

    /// Read about `frames` input frames. True when output is available.
    bool prepare(EngineInput& input, std::int64_t frames);

    /// Set the ratio, output frames for an input frame. Input that has been read keeps the former ratio.
    void setRatio(double ratio);
    double ratio() const { return ratio_; }

    /// Render the next frames, planar.
    void read(EngineInput& input, Float32* const* out, UInt32 frames);

    /// The input frame that corresponds to the output frame `framesAgo` before the next one.
    double position(double framesAgo) const;

    /// Whether the next output frames were stretched at the present ratio.
    bool isSettled() const { return unsettledFrames_ <= 0; }

    /// Latency in input frames, and tail until -60 dB in output frames. The tail is measured: the windows
    /// that hold the last frame spread when they are stretched.
    /// [any]
    double latency(double ratio) const { return pad_ + (delay_ + hop) / ratio; }
    double tail(double ratio) const { return delay_ * std::max(1.0, ratio + 0.5); }

private:
    void feed(EngineInput& input);
    void process(UInt32 frames);
    void silenceInvalid(UInt32 frames);
    UInt32 retrieve(Float32* const* out, std::int64_t maxFrames);
    void dropStart();

    static constexpr UInt32 hop = 512; ///< the largest step between windows in either mode

    RubberBand::RubberBandStretcher rubberBand_;
    UInt32 pad_, delay_; ///< of Rubber Band, in frames
    double ratio_ = 1;
    std::int64_t nextInput_ = 0;            ///< the next frame to take from the history
    std::int64_t windowEnd_ = 0;            ///< the input frame after the newest window
    std::int64_t readSinceWindow_ = 0;      ///< output frames since that window was complete
    std::int64_t framesToDrop_ = 0;         ///< of the output before the start frame
    std::int64_t unsettledFrames_ = 0;      ///< output still to come at former ratios
    std::vector<Float32> silence_;          ///< a block, the same for all channels
    std::vector<Float32> finite_, dropped_; ///< a block of each channel
    std::vector<const Float32*> in_;
    std::vector<Float32*> planes_;
};

} // namespace kvxplatform::audiounit
