#include "platform/audiounit/mixer/level_meter.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

constexpr double windowSeconds = 0.1, holdSeconds = 1, decibelsPerSecond = 20;
constexpr double maxPeak = 1e6, minPeak = 1e-6;

struct Measurement {
    double energy;
    Float32 peak;
};

// Separate sums and peaks become SIMD lanes. With a single sum each frame would wait for the frame before it;
// more lanes than four need more registers than the processor has.
Measurement measurementOf(const Float32* samples, UInt32 frames)
{
    constexpr UInt32 lanes = 4;
    double energies[lanes] = {};
    Float32 peaks[lanes] = {};
    const auto add = [&](UInt32 lane, Float32 sample) {
        const Float32 magnitude = std::fabs(sample);
        energies[lane] += double{sample} * double{sample};
        // The comparison is false for a NaN, so the peak ignores it.
        peaks[lane] = magnitude > peaks[lane] ? magnitude : peaks[lane];
    };
    UInt32 frame = 0;
    for (; frame + lanes <= frames; frame += lanes)
        for (UInt32 lane = 0; lane < lanes; ++lane) add(lane, samples[frame + lane]);
    for (; frame < frames; ++frame) add(0, samples[frame]);
    return {(energies[0] + energies[1]) + (energies[2] + energies[3]),
            std::max(std::max(peaks[0], peaks[1]), std::max(peaks[2], peaks[3]))};
}

} // namespace

// The ring buffer is long enough, because windowFrames_ / segmentFrames_ is below 2 * segmentsInWindow at any
// rate.
LevelMeter::LevelMeter(Float64 sampleRate)
    : windowFrames_(std::clamp(std::round(sampleRate * windowSeconds), 1.0, 1e9)),
      segmentFrames_(std::max<UInt32>(1, static_cast<UInt32>(windowFrames_) / segmentsInWindow)),
      holdFrames_(sampleRate * holdSeconds),
      segmentDecay_(std::pow(10, -decibelsPerSecond / 20 * segmentFrames_ / sampleRate))
{
}

void LevelMeter::reset()
{
    energies_.fill(0);
    next_ = framesInSegment_ = 0;
    segmentEnergy_ = segmentPeak_ = heldPeak_ = framesHeld_ = 0;
}

void LevelMeter::measure(const Float32* samples, UInt32 frames)
{
    while (frames) {
        const UInt32 count = std::min(frames, segmentFrames_ - framesInSegment_);
        const Measurement measured = measurementOf(samples, count);
        segmentEnergy_ += measured.energy;
        segmentPeak_ = std::clamp<double>(measured.peak, segmentPeak_, maxPeak);
        framesInSegment_ += count;
        if (framesInSegment_ == segmentFrames_) closeSegment();
        samples += count;
        frames -= count;
    }
}

void LevelMeter::measureSilence(UInt32 frames)
{
    while (frames) {
        const UInt32 count = std::min(frames, segmentFrames_ - framesInSegment_);
        framesInSegment_ += count;
        if (framesInSegment_ == segmentFrames_) closeSegment();
        frames -= count;
    }
}

void LevelMeter::closeSegment()
{
    energies_[next_] = std::isfinite(segmentEnergy_) ? segmentEnergy_ : 0;
    next_ = (next_ + 1) % energies_.size();

    framesHeld_ += framesInSegment_;
    if (framesHeld_ > holdFrames_) heldPeak_ *= segmentDecay_;
    if (heldPeak_ < minPeak) heldPeak_ = 0;
    if (segmentPeak_ >= heldPeak_) {
        heldPeak_ = segmentPeak_;
        framesHeld_ = 0;
    }
    segmentEnergy_ = segmentPeak_ = 0;
    framesInSegment_ = 0;
}

Float32 LevelMeter::averagePower() const
{
    double sum = std::isfinite(segmentEnergy_) ? segmentEnergy_ : 0;
    double framesLeft = windowFrames_ - framesInSegment_;
    UInt32 index = next_;
    const auto previousEnergy = [&] {
        return energies_[index = (index ? index : static_cast<UInt32>(energies_.size())) - 1];
    };
    for (; framesLeft >= segmentFrames_; framesLeft -= segmentFrames_) sum += previousEnergy();
    if (framesLeft > 0) sum += previousEnergy() * (framesLeft / segmentFrames_);
    return static_cast<Float32>(std::min(sum / windowFrames_, maxPeak * maxPeak));
}

} // namespace kvxplatform::audiounit
