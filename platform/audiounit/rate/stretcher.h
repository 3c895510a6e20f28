// The time stretcher: Rubber Band, fed from the input history.
//
// Both modes use Rubber Band's finer engine, either with all of its windows or with a single window. The
// faster engine of Rubber Band is not used because it allocates whenever the ratio changes, cannot stretch to
// less than about an eighth of the duration, costs more than the finer engine with a single window, and with
// each of its options blurs attacks or disturbs steady notes (docs/performance.md).
#pragma once

#include "platform/audiounit/rate/rate_engine.h"

#include <rubberband/RubberBandStretcher.h>

#include <algorithm>
#include <vector>

namespace kvxplatform::audiounit {

// All functions but the constructor, latency() and tail(): [audio & rendering].
// These functions allocate nothing.
class Stretcher {
public:
    enum class Mode { finer, faster };

    /// Make a stretcher. Throws std::bad_alloc.
    Stretcher(Float64 sampleRate, UInt32 channels, Mode mode);

    /// Clear the stretcher, as RateEngine::start does. The next output frame corresponds to input frame
    /// `frame`.
    void start(std::int64_t frame, double ratio);
    std::int64_t leadIn(double ratio) const;

    /// Read about `frames` input frames.
    /// Returns  true when output is available.
    bool prepare(EngineInput& input, std::int64_t frames);

    /// Set the ratio in output frames per input frame. Input that the stretcher has already read keeps its
    /// ratio.
    void setRatio(double ratio);
    double ratio() const { return ratio_; }

    /// Render the next frames, planar.
    void read(EngineInput& input, Float32* const* out, UInt32 frames);

    /// Returns  the input frame that corresponds to the output frame `framesAgo` frames before the next one.
    double position(double framesAgo) const;

    /// Whether the next output frames were stretched at the present ratio.
    bool isSettled() const { return unsettledFrames_ <= 0; }

    /// Returns  the latency in input frames, or the tail to -60 dB in output frames. The tail formula was
    ///          measured: stretching spreads the windows that contain the last frame.
    /// [any]
    double latency(double ratio) const { return pad_ + (delay_ + hop) / ratio; }
    double tail(double ratio) const { return delay_ * std::max(1.0, ratio + 0.5); }

private:
    void feed(EngineInput& input);
    void process(UInt32 frames);
    void silenceInvalid(UInt32 frames);
    UInt32 retrieve(Float32* const* out, std::int64_t maxFrames);
    void dropStart();

    static constexpr UInt32 hop = 512; ///< largest step between two windows in either mode

    RubberBand::RubberBandStretcher rubberBand_;
    UInt32 pad_, delay_; ///< start pad and start delay of Rubber Band in frames
    double ratio_ = 1;
    std::int64_t nextInput_ = 0; ///< next input frame to read from the history
    std::int64_t windowEnd_ = 0; ///< input frame after the end of the newest window
    /// Number of output frames rendered since the newest window was complete.
    std::int64_t readSinceWindow_ = 0;
    /// Number of output frames to drop because they lie before the start frame.
    std::int64_t framesToDrop_ = 0;
    /// Number of coming output frames that were stretched at earlier ratios.
    std::int64_t unsettledFrames_ = 0;
    std::vector<Float32> silence_; ///< a block of silence, which serves every channel
    /// A block of each channel: input without invalid samples, and output to be dropped.
    std::vector<Float32> finite_, dropped_;
    std::vector<const Float32*> in_;
    std::vector<Float32*> planes_;
};

} // namespace kvxplatform::audiounit
