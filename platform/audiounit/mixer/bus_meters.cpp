#include "platform/audiounit/mixer/bus_meters.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::audiounit {
namespace {

constexpr std::size_t placeOf(Level which, UInt32 channel)
{
    return static_cast<std::size_t>(which) * meteredChannels + channel;
}

bool isAverage(Level which) { return which == Level::preAverage || which == Level::postAverage; }

} // namespace

void BusMeters::prepare(UInt32 channels, Float64 sampleRate)
{
    for (auto& stage : meters) stage.assign(std::min(channels, meteredChannels), LevelMeter(sampleRate));
    measures = false;
    silence();
}

void BusMeters::turn(bool on)
{
    isOn = on;
    if (!on) silence();
}

Float32 BusMeters::level(Level which, UInt32 channel) const
{
    if (!isTurnedOn()) return silentLevel;
    const Float32 value = published[placeOf(which, channel)].load(std::memory_order_relaxed);
    const Float32 decibels = (isAverage(which) ? 10 : 20) * std::log10(value);
    return std::clamp(decibels, silentLevel, loudestLevel);
}

void BusMeters::begin(bool forgetsPast)
{
    const bool was = measures;
    measures = isTurnedOn();
    if (was && !measures) silence(); // a slice may have run while it was turned off
    if (measures && (!was || forgetsPast))
        for (auto& stage : meters)
            for (LevelMeter& meter : stage) meter.reset();
}

void BusMeters::measure(Stage stage, const AudioBufferList& list, UInt32 frames)
{
    if (!measures) return;
    auto& each = meters[static_cast<int>(stage)];
    for (std::size_t i = 0; i < each.size(); ++i)
        each[i].measure(static_cast<const Float32*>(list.mBuffers[i].mData), frames);
}

void BusMeters::measureSilence(UInt32 frames)
{
    if (!measures) return;
    for (auto& stage : meters)
        for (LevelMeter& meter : stage) meter.measureSilence(frames);
}

void BusMeters::publish()
{
    if (!measures) return;
    const auto put = [this](Level which, std::size_t channel, Float32 value) {
        published[placeOf(which, static_cast<UInt32>(channel))].store(value, std::memory_order_relaxed);
    };
    for (std::size_t i = 0; i < meters[0].size(); ++i) {
        put(Level::preAverage, i, meters[0][i].averagePower());
        put(Level::prePeak, i, meters[0][i].peak());
        put(Level::postAverage, i, meters[1][i].averagePower());
        put(Level::postPeak, i, meters[1][i].peak());
    }
}

void BusMeters::silence()
{
    for (auto& each : published) each.store(0, std::memory_order_relaxed);
}

} // namespace kvxplatform::audiounit
