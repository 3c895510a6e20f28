// Rate and pitch together: a rate conversion whose ratio may change while it runs.
#pragma once

#include "platform/audiounit/rate/glide.h"
#include "platform/audiounit/rate/voice.h"
#include "platform/pcm/rate_converter.h"

#include <vector>

namespace kvxplatform::audiounit {

class VarispeedVoice final : public Voice {
public:
    /// Throws std::bad_alloc.
    VarispeedVoice(const AudioStreamBasicDescription& format, pcm::RateConverter::Quality quality);

    void start(std::int64_t frame, const Setting& setting) override;
    std::int64_t leadIn(const Setting&) const override { return 0; }
    bool prepare(Reader&, std::int64_t) override { return true; }
    void read(Reader& reader, const Setting& setting, Float32* const* out, UInt32 frames) override;
    double position() const override { return heard; }
    bool isNeutral() const override { return rate.isThere() && rate.value() == 1; }
    double framesAhead(const Setting& setting) const override;
    double framesOfTail(const Setting& setting) const override;

private:
    struct Pulling;

    UInt32 channels;
    pcm::RateConverter::Quality filter;
    pcm::RateConverter converter;
    Glide rate;
    std::int64_t fed = 0; // the next frame to take from the tape
    double heard = 0;

    std::vector<Float32> pulled, converted; // a block each, interleaved
    std::vector<const Float32*> in;
};

} // namespace kvxplatform::audiounit
