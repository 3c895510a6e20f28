#include "platform/audiounit/rate/stretcher.h"

#include <cmath>

namespace kvxplatform::audiounit {
namespace {

using Band = RubberBand::RubberBandStretcher;

constexpr UInt32 largestPiece = 1024; // that the engine is given at once

// Far above full scale. The engine's phases would never recover from an infinite sample, or one that is no
// number.
constexpr Float32 loudest = 1e9f;

constexpr int common = Band::OptionProcessRealTime | Band::OptionThreadingNever | Band::OptionEngineFiner |
                       Band::OptionChannelsTogether;
constexpr int options[] = {common, common | Band::OptionWindowShort};

// The engine knows these rates; at others it works as at the nearest.
std::size_t rateFor(Float64 sampleRate)
{
    return static_cast<std::size_t>(std::clamp(sampleRate, 8000.0, 192000.0));
}

} // namespace

Stretcher::Stretcher(Float64 sampleRate, UInt32 channels, Engine engine)
    : band(rateFor(sampleRate), channels, options[static_cast<int>(engine)]), silence(largestPiece, 0),
      tamed(std::size_t{largestPiece} * channels), dropped(tamed.size()), in(channels), planes(channels)
{
    band.setMaxProcessSize(largestPiece);
    pad = static_cast<UInt32>(band.getPreferredStartPad());
    delay = static_cast<UInt32>(band.getStartDelay());
}

// The engine's own pad lets the first window begin at the first frame. Frames reach full strength only where
// all the windows overlap that will, so there is more in front, whose sound is dropped.
std::int64_t Stretcher::leadIn(double ratio) const
{
    return pad + static_cast<std::int64_t>(std::ceil(delay / ratio));
}

void Stretcher::start(std::int64_t frame, double ratio)
{
    band.reset();
    band.setTimeRatio(ratio);
    ratio_ = ratio;
    fed = frame - leadIn(ratio);
    toDrop = delay + std::llround(static_cast<double>(leadIn(ratio) - pad) * ratio);
    unsettled = 0;
}

void Stretcher::setRatio(double ratio)
{
    if (ratio == ratio_) return;
    band.setTimeRatio(ratio);
    ratio_ = ratio;
    unsettled = std::int64_t{2} * delay + band.available();
}

void Stretcher::process(UInt32 frames)
{
    band.process(in.data(), frames, false);
    fed += frames;
}

void Stretcher::tame(UInt32 frames)
{
    for (std::size_t channel = 0; channel < in.size(); ++channel) {
        const Float32* from = in[channel];
        Float32* to = tamed.data() + channel * largestPiece;
        for (UInt32 frame = 0; frame < frames; ++frame)
            to[frame] = std::fabs(from[frame]) <= loudest ? from[frame] : 0;
        in[channel] = to;
    }
}

// Called with nothing left to read: only then the engine says what it needs.
void Stretcher::feed(Reader& reader)
{
    const std::size_t required = std::max<std::size_t>(band.getSamplesRequired(), 1);
    const auto needed = static_cast<UInt32>(std::min<std::size_t>(required, largestPiece));
    windowEnd = fed + static_cast<std::int64_t>(required);
    readSince = 0;
    const std::int64_t missing = reader.tape.begin() - fed;
    if (missing > 0) {
        std::fill(in.begin(), in.end(), silence.data());
        process(static_cast<UInt32>(std::min<std::int64_t>(missing, needed)));
        return;
    }
    reader.tape.pullUntil(reader.request, fed + needed);
    for (UInt32 done = 0; done < needed;) {
        const UInt32 now = reader.tape.look(fed, needed - done, in.data());
        tame(now);
        process(now);
        done += now;
    }
}

UInt32 Stretcher::retrieve(Float32* const* out, std::int64_t most)
{
    const std::int64_t there = std::min<std::int64_t>(most, band.available());
    if (there <= 0) return 0;
    const std::size_t frames = band.retrieve(out, static_cast<std::size_t>(there));
    readSince += static_cast<std::int64_t>(frames);
    return static_cast<UInt32>(frames);
}

void Stretcher::dropStart()
{
    for (std::size_t channel = 0; channel < planes.size(); ++channel)
        planes[channel] = dropped.data() + channel * largestPiece;
    while (toDrop > 0) {
        const UInt32 now = retrieve(planes.data(), std::min<std::int64_t>(toDrop, largestPiece));
        if (now == 0) return;
        toDrop -= now;
    }
}

bool Stretcher::prepare(Reader& reader, std::int64_t most)
{
    const std::int64_t until = fed + most;
    for (;;) {
        dropStart();
        if (toDrop == 0 && band.available() > 0) return true;
        if (fed >= until) return false;
        feed(reader);
    }
}

void Stretcher::read(Reader& reader, Float32* const* out, UInt32 frames)
{
    for (UInt32 done = 0; done < frames;) {
        while (!prepare(reader, largestPiece)) {
        }
        for (std::size_t channel = 0; channel < planes.size(); ++channel)
            planes[channel] = out[channel] + done;
        done += retrieve(planes.data(), frames - done);
    }
    unsettled = std::max<std::int64_t>(unsettled - frames, 0);
}

// The newest window reaches `pad` frames to either side; what could be read first when it was in lies `delay`
// frames in front of its middle.
double Stretcher::position(double behind) const
{
    const auto frames = static_cast<double>(readSince) - delay - behind;
    return static_cast<double>(windowEnd - pad) + frames / ratio_;
}

} // namespace kvxplatform::audiounit
