#include "platform/audiounit/rate/rate_unit.h"

#include "platform/audiounit/common_properties.h"
#include "platform/audiounit/rate/rate_units.h"
#include "platform/audiounit/render.h"

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 maxRateChannels = 64;

RateRequest requestOf(const Unit& unit)
{
    const Setting setting = stateOf<RateUnit>(unit).kind.setting(unit);
    return {!unit.isBypassed && !setting.isNeutral(), setting};
}

/// Whether the present settings need an engine of another type than the one made last. Sets `type` to the
/// type that they need.
bool needsEngine(const Unit& unit, int& type)
{
    const auto& state = stateOf<RateUnit>(unit);
    type = state.kind.engineType(unit, state.quality);
    return type != state.engineType && requestOf(unit).usesEngine;
}

/// Make the engine that the settings need, unless it exists. The caller holds the `settings` lock.
void makeEngine(Unit& unit)
{
    auto& state = stateOf<RateUnit>(unit);
    int type = 0;
    if (!needsEngine(unit, type)) return;
    const AudioStreamBasicDescription& format = unit.output(0).format;
    state.path.prepareForEngine(state.kind.historyFrames(format.mSampleRate));
    state.path.publish(state.kind.make(format, type), unit.scope);
    state.engineType = type;
}

/// Make the engine that the settings need if the unit is initialised and this thread is not inside its slice.
/// The caller holds the `settings` lock.
void makeEngineWhileInitialized(Unit& unit)
{
    if (unit.isInitialized && !unit.scope.isInside()) makeEngine(unit);
}

OSStatus getLatency(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const auto& state = stateOf<RateUnit>(unit);
    if (!unit.isInitialized) return give(data, Float64{0});
    const Float32 measured = unit.isResetPending ? 0 : state.measuredLatency.load();
    if (measured > 0) return give(data, Float64{measured});
    const RateRequest request = requestOf(unit);
    const RateEngine* const engine = state.path.engine();
    const double frames = request.usesEngine && engine ? engine->latency(request.setting) : 0;
    return give(data, Float64{frames / unit.output(0).format.mSampleRate});
}

OSStatus getTail(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const RateRequest request = requestOf(unit);
    const RateEngine* const engine = stateOf<RateUnit>(unit).path.engine();
    const bool hasTail = unit.isInitialized && request.usesEngine && engine;
    const double frames = hasTail ? engine->tail(request.setting) : 0;
    return give(data, Float64{frames / unit.output(0).format.mSampleRate});
}

OSStatus setBypassAndMakeEngine(Unit& unit, ElementAddress address, const void* data, UInt32 size)
{
    setBypass(unit, address, data, size);
    makeEngineWhileInitialized(unit);
    return noErr;
}

OSStatus getQuality(Unit& unit, ElementAddress, void* data, UInt32&)
{
    return give(data, stateOf<RateUnit>(unit).quality.load());
}

OSStatus setQuality(Unit& unit, ElementAddress, const void* data, UInt32)
{
    const auto quality = valueAt<UInt32>(data);
    if (quality > kRenderQuality_Max) return kAudioUnitErr_InvalidPropertyValue;
    stateOf<RateUnit>(unit).quality = quality;
    makeEngineWhileInitialized(unit);
    return noErr;
}

constexpr auto always = Settable::always;
constexpr auto read = Access::readOnly;
constexpr auto both = Access::readWrite;

} // namespace

// clang-format off
const Property rateProperties[] = {
    // property                                scopes    element     bytes                  access settable get                    set                     size of
    {kAudioUnitProperty_Latency,               inGlobal, anyElement, sizeof(Float64),       read,  always,  getLatency,            nullptr,                nullptr},
    {kAudioUnitProperty_SupportedNumChannels,  inGlobal, anyElement, sizeof(AUChannelInfo), read,  always,  getEqualChannelCounts, nullptr,                nullptr},
    {kAudioUnitProperty_TailTime,              inGlobal, anyElement, sizeof(Float64),       read,  always,  getTail,               nullptr,                nullptr},
    {kAudioUnitProperty_BypassEffect,          inGlobal, anyElement, sizeof(UInt32),        both,  always,  getBypass,             setBypassAndMakeEngine, nullptr},
    {kAudioUnitProperty_RenderQuality,         inGlobal, anyElement, sizeof(UInt32),        both,  always,  getQuality,            setQuality,             nullptr},
};
// clang-format on

void destroyRateUnit(void* state) { delete static_cast<RateUnit*>(state); }

bool takesRateFormat(const Unit&, AudioUnitScope, AudioUnitElement, const AudioStreamBasicDescription& format)
{
    return pcm::isCanonical(format) && format.mChannelsPerFrame <= maxRateChannels;
}

OSStatus initializeRateUnit(Unit& unit)
{
    auto& state = stateOf<RateUnit>(unit);
    const AudioStreamBasicDescription& format = unit.output(0).format;
    if (!pcm::isSameFormat(unit.input(0).format, format)) return kAudioUnitErr_FormatNotSupported;
    state.path.prepare(format);
    state.measuredLatency = 0;
    makeEngine(unit);
    return noErr;
}

void uninitializeRateUnit(Unit& unit)
{
    auto& state = stateOf<RateUnit>(unit);
    state.engineType = -1;
    state.path.release(unit.scope);
}

void resetRateUnit(Unit& unit) { stateOf<RateUnit>(unit).path.reset(); }

OSStatus renderRateUnit(Unit& unit, Slice& slice)
{
    auto& state = stateOf<RateUnit>(unit);
    const OSStatus status = state.path.render(unit, slice, requestOf(unit));
    const Float64 frames = state.path.framesAhead() / state.path.rate();
    state.measuredLatency = static_cast<Float32>(frames / unit.output(0).format.mSampleRate);
    return status;
}

OSStatus setRateParameter(Unit& unit, const Parameter& row, AudioUnitElement element, UInt32 index,
                          Float32 value)
{
    storeParameter(unit, row.id + index, row.scope, element, value);
    int type = 0;
    if (unit.scope.isInside() || !needsEngine(unit, type)) return noErr;
    // initialize() also holds this lock, so this thread sees the unit either initialised or not yet
    // initialised.
    const std::lock_guard<std::mutex> guard(unit.settings);
    makeEngineWhileInitialized(unit);
    return noErr;
}

} // namespace kvxplatform::audiounit
