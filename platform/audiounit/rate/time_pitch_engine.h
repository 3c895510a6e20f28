// Changes rate and pitch independently. A stretcher changes the duration; to change the pitch, it stretches
// by a further factor, and a rate conversion restores the duration.
#pragma once

#include "platform/audiounit/rate/gliding_converter.h"
#include "platform/audiounit/rate/stretcher.h"

#include <vector>

namespace kvxplatform::audiounit {

class TimePitchEngine final : public RateEngine {
public:
    /// Make an engine for a format and a mode of the stretcher. Throws std::bad_alloc.
    TimePitchEngine(const AudioStreamBasicDescription& format, Stretcher::Mode mode);

    void start(std::int64_t frame, const Setting& setting) override;
    std::int64_t leadIn(const Setting& setting) const override;
    bool prepare(EngineInput& input, std::int64_t frames) override;
    void read(EngineInput& input, const Setting& setting, Float32* const* out, UInt32 frames) override;
    double position() const override { return stretcher_.position(unplayed_); }
    bool isNeutral() const override;
    double latency(const Setting& setting) const override;
    double tail(const Setting& setting) const override;

private:
    const Float32* pull(EngineInput& input, UInt32 frames);
    void beginConversion(EngineInput& input);
    void readStretched(EngineInput& input, Float32* const* out, UInt32 frames);

    UInt32 channels_;
    Stretcher stretcher_;
    GlidingConverter converter_; ///< converter whose rate is the pitch
    bool isConverting_ = false;  ///< whether the pitch has changed since the start
    double unplayed_ = 0;        ///< number of stretched frames that the converter has read and not played

    std::vector<Float32> stretched_; ///< a block of stretched frames, planar
    std::vector<Float32> pulled_;    ///< the same block of stretched frames, interleaved
    std::vector<Float32*> planes_;
    std::vector<Float32> recent_; ///< newest stretched frames of the output, interleaved
};

} // namespace kvxplatform::audiounit
