#include "platform/audiounit/mixer/bus_meters.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::audiounit {
namespace {

constexpr std::size_t indexOf(Level which, UInt32 channel)
{
    return static_cast<std::size_t>(which) * meteredChannels + channel;
}

bool isAverage(Level which) { return which == Level::preAverage || which == Level::postAverage; }

} // namespace

void BusMeters::prepare(UInt32 channels, Float64 sampleRate)
{
    for (auto& stage : meters_) stage.assign(std::min(channels, meteredChannels), LevelMeter(sampleRate));
    isEqual_ = true;
    isMeasuring_ = false;
    publishSilence();
}

void BusMeters::setEnabled(bool isEnabled)
{
    isEnabled_ = isEnabled;
    if (!isEnabled) publishSilence();
}

Float32 BusMeters::level(Level which, UInt32 channel) const
{
    if (!isEnabled()) return minDecibels;
    const Float32 value = levels_[indexOf(which, channel)].load(std::memory_order_relaxed);
    const Float32 decibels = (isAverage(which) ? 10 : 20) * std::log10(value);
    return std::clamp(decibels, minDecibels, maxDecibels);
}

void BusMeters::begin(bool isReset)
{
    const bool wasMeasuring = isMeasuring_;
    isMeasuring_ = isEnabled();
    // The levels become silence again here because the last measured slice may have overwritten the silence
    // that setEnabled() published.
    if (wasMeasuring && !isMeasuring_) publishSilence();
    if (!isMeasuring_ || (wasMeasuring && !isReset)) return;
    isEqual_ = true;
    for (LevelMeter& meter : meters_[0]) meter.reset();
}

void BusMeters::measure(Stage stage, const AudioBufferList& list, UInt32 frames)
{
    if (!isMeasuring_) return;
    if (isEqual_) meters_[1] = meters_[0];
    isEqual_ = false;
    measureAt(static_cast<int>(stage), list, frames);
}

void BusMeters::measureBoth(const AudioBufferList& list, UInt32 frames)
{
    if (!isMeasuring_) return;
    for (int stage = 0; stage < distinctStages(); ++stage) measureAt(stage, list, frames);
}

void BusMeters::measureSilence(UInt32 frames)
{
    if (!isMeasuring_) return;
    for (int stage = 0; stage < distinctStages(); ++stage)
        for (LevelMeter& meter : meters_[stage]) meter.measureSilence(frames);
}

void BusMeters::measureAt(int stage, const AudioBufferList& list, UInt32 frames)
{
    for (std::size_t i = 0; i < meters_[stage].size(); ++i)
        meters_[stage][i].measure(static_cast<const Float32*>(list.mBuffers[i].mData), frames);
}

void BusMeters::publish()
{
    if (!isMeasuring_) return;
    const auto set = [this](Level which, std::size_t channel, Float32 value) {
        levels_[indexOf(which, static_cast<UInt32>(channel))].store(value, std::memory_order_relaxed);
    };
    for (std::size_t i = 0; i < meters_[0].size(); ++i) {
        const Float32 average = meters_[0][i].averagePower(), peak = meters_[0][i].peak();
        set(Level::preAverage, i, average);
        set(Level::prePeak, i, peak);
        set(Level::postAverage, i, isEqual_ ? average : meters_[1][i].averagePower());
        set(Level::postPeak, i, isEqual_ ? peak : meters_[1][i].peak());
    }
}

void BusMeters::publishSilence()
{
    for (auto& each : levels_) each.store(0, std::memory_order_relaxed);
}

} // namespace kvxplatform::audiounit
