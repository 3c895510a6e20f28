// Changes rate and pitch together by a rate conversion whose ratio may change while it runs.
#pragma once

#include "platform/audiounit/rate/gliding_converter.h"
#include "platform/audiounit/rate/rate_engine.h"

#include <vector>

namespace kvxplatform::audiounit {

class VarispeedEngine final : public RateEngine {
public:
    /// Make an engine for a format and a quality of the conversion. Throws std::bad_alloc.
    VarispeedEngine(const AudioStreamBasicDescription& format, pcm::VariableRateConverter::Quality quality);

    void start(std::int64_t frame, const Setting& setting) override;
    std::int64_t leadIn(const Setting&) const override { return 0; }
    bool prepare(EngineInput&, std::int64_t) override { return true; }
    void read(EngineInput& input, const Setting& setting, Float32* const* out, UInt32 frames) override;
    double position() const override { return position_; }
    bool isNeutral() const override { return !converter_.isGliding() && converter_.rate() == 1; }
    double latency(const Setting& setting) const override;
    double tail(const Setting& setting) const override { return latency(setting); }

private:
    const Float32* pull(EngineInput& input, UInt32 frames);

    UInt32 channels_;
    pcm::VariableRateConverter::Quality quality_;
    GlidingConverter converter_;
    std::int64_t nextInput_ = 0; ///< next input frame to read from the history
    double position_ = 0;

    std::vector<Float32> pulled_; ///< a block of input, interleaved
    std::vector<const Float32*> planes_;
};

} // namespace kvxplatform::audiounit
