// Time by a stretcher, pitch by stretching further and converting the rate back.
#pragma once

#include "platform/audiounit/rate/glide.h"
#include "platform/audiounit/rate/stretcher.h"
#include "platform/pcm/rate_converter.h"

namespace kvxplatform::audiounit {

class TimePitchVoice final : public Voice {
public:
    /// Throws std::bad_alloc.
    TimePitchVoice(const AudioStreamBasicDescription& format, Stretcher::Engine engine);

    void start(std::int64_t frame, const Setting& setting) override;
    std::int64_t leadIn(const Setting& setting) const override;
    bool prepare(Reader& reader, std::int64_t most) override;
    void read(Reader& reader, const Setting& setting, Float32* const* out, UInt32 frames) override;
    double position() const override;
    bool isNeutral() const override;
    double framesAhead(const Setting& setting) const override;
    double framesOfTail(const Setting& setting) const override;

private:
    struct Pulling;
    void beginConversion(Reader& reader);
    void convert(Reader& reader, Float32* out, UInt32 frames);
    void readStretched(Reader& reader, Float32* const* out, UInt32 frames);

    UInt32 channels;
    Stretcher stretcher;
    pcm::RateConverter converter;
    bool converts = false; // once the pitch has been changed, and until the next start
    Glide pitch;
    double ahead = 0; // stretched frames that the converter has taken, but not played

    std::vector<Float32> stretched; // a block, channel after channel
    std::vector<Float32> pulled;    // the same, interleaved
    std::vector<Float32> converted; // likewise
    std::vector<Float32*> planes;
    std::vector<Float32> recent; // the last stretched frames heard, interleaved
};

} // namespace kvxplatform::audiounit
