// Rate and pitch apart: a stretcher for time; for pitch it stretches further and a converter changes the rate
// back.
#pragma once

#include "platform/audiounit/rate/gliding_converter.h"
#include "platform/audiounit/rate/stretcher.h"

#include <vector>

namespace kvxplatform::audiounit {

class TimePitchEngine final : public RateEngine {
public:
    /// Throws std::bad_alloc.
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
    GlidingConverter converter_; ///< its rate is the pitch
    bool isConverting_ = false;  ///< since the first change of pitch after the start
    double unplayed_ = 0;        ///< stretched frames that the converter has taken and not played

    std::vector<Float32> stretched_; ///< a block, planar
    std::vector<Float32> pulled_;    ///< the same block, interleaved
    std::vector<Float32*> planes_;
    std::vector<Float32> recent_; ///< the last stretched frames of the output, interleaved
};

} // namespace kvxplatform::audiounit
