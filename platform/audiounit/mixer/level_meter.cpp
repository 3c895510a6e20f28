#include "platform/audiounit/mixer/level_meter.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

constexpr double windowSeconds = 0.1, holdSeconds = 1, fallPerSecond = 20; // decibels
constexpr double loudest = 1e6, quietest = 1e-6;

struct Loudness {
    double energy;
    Float32 peak;
};

// Several sums and peaks side by side: a single one would have each frame wait for the one before.
Loudness loudnessOf(const Float32* samples, UInt32 frames)
{
    constexpr UInt32 lanes = 8;
    double energies[lanes] = {};
    Float32 peaks[lanes] = {};
    UInt32 frame = 0;
    for (; frame + lanes <= frames; frame += lanes)
        for (UInt32 lane = 0; lane < lanes; ++lane) {
            const Float32 sample = samples[frame + lane], magnitude = std::fabs(sample);
            energies[lane] += double{sample} * double{sample};
            peaks[lane] = magnitude > peaks[lane] ? magnitude : peaks[lane]; // what is no number is not
        }
    Loudness all = {0, 0};
    for (; frame < frames; ++frame) {
        all.energy += double{samples[frame]} * double{samples[frame]};
        all.peak = std::fmax(all.peak, std::fabs(samples[frame]));
    }
    for (UInt32 lane = 0; lane < lanes; ++lane) {
        all.energy += energies[lane];
        all.peak = std::fmax(all.peak, peaks[lane]);
    }
    return all;
}

} // namespace

// windowFrames / stretchFrames is below 2 * stretchesInWindow, whatever the rate: the ring is long enough.
LevelMeter::LevelMeter(Float64 sampleRate)
    : windowFrames(std::clamp(std::round(sampleRate * windowSeconds), 1.0, 1e9)),
      stretchFrames(std::max<UInt32>(1, static_cast<UInt32>(windowFrames) / stretchesInWindow)),
      holdFrames(sampleRate * holdSeconds),
      fall(std::pow(10, -fallPerSecond / 20 * stretchFrames / sampleRate))
{
}

void LevelMeter::reset()
{
    energies.fill(0);
    next = runningFrames = 0;
    runningEnergy = runningPeak = heldPeak = heldFrames = 0;
}

void LevelMeter::measure(const Float32* samples, UInt32 frames)
{
    while (frames) {
        const UInt32 now = std::min(frames, stretchFrames - runningFrames);
        const Loudness piece = loudnessOf(samples, now);
        runningEnergy += piece.energy;
        runningPeak = std::clamp<double>(piece.peak, runningPeak, loudest);
        runningFrames += now;
        if (runningFrames == stretchFrames) closeStretch();
        samples += now;
        frames -= now;
    }
}

void LevelMeter::measureSilence(UInt32 frames)
{
    while (frames) {
        const UInt32 now = std::min(frames, stretchFrames - runningFrames);
        runningFrames += now;
        if (runningFrames == stretchFrames) closeStretch();
        frames -= now;
    }
}

void LevelMeter::closeStretch()
{
    energies[next] = std::isfinite(runningEnergy) ? runningEnergy : 0;
    next = (next + 1) % energies.size();

    heldFrames += runningFrames;
    if (heldFrames > holdFrames) heldPeak *= fall;
    if (heldPeak < quietest) heldPeak = 0;
    if (runningPeak >= heldPeak) {
        heldPeak = runningPeak;
        heldFrames = 0;
    }
    runningEnergy = runningPeak = 0;
    runningFrames = 0;
}

Float32 LevelMeter::averagePower() const
{
    double sum = std::isfinite(runningEnergy) ? runningEnergy : 0;
    double left = windowFrames - runningFrames;
    UInt32 at = next;
    const auto before = [&] { return energies[at = (at ? at : static_cast<UInt32>(energies.size())) - 1]; };
    for (; left >= stretchFrames; left -= stretchFrames) sum += before();
    if (left > 0) sum += before() * (left / stretchFrames);
    return static_cast<Float32>(std::min(sum / windowFrames, loudest * loudest));
}

} // namespace kvxplatform::audiounit
