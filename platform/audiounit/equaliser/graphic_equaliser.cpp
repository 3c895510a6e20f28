// The graphic equaliser: a series of bell filters, one for each band that is not flat.
//
// The gain of a band ramps to each new value, also from and to flat, so that no setting clicks while audio
// runs. The bands of the inactive set are flat, and so are all bands of a bypassed unit. If all bands are
// flat, samples pass unchanged.
#include "platform/audiounit/common_properties.h"
#include "platform/audiounit/equaliser/bands.h"
#include "platform/audiounit/equaliser/bell_filter.h"
#include "platform/audiounit/equaliser/equaliser_unit.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"
#include "platform/audiounit/render.h"
#include "platform/audiounit/source.h"
#include "platform/pcm/gain.h"

#include <algorithm>
#include <vector>

namespace kvxplatform::audiounit {
namespace {

constexpr UInt32 blockFrames = 64; // number of frames filtered at a time, in double precision
// The level, in decibels below the last frame, at which the tail ends.
constexpr double inaudibleDecibels = 100;
constexpr AudioUnitRenderActionFlags isSilence = kAudioUnitRenderAction_OutputIsSilence;

struct Band {
    BellShape shape{};
    bool isAvailable = false; ///< whether the band's centre is below half the sample rate
    Float32 decibels = 0;     ///< gain in decibels that the height ramps to
    pcm::Gain height = {1, 1};
    std::vector<BellState> states; ///< one filter state per channel

    bool isFlat() const { return height.isUnity(); }
};

/// The state of the unit. Any thread may use it while the unit is not initialised.
/// [audio & rendering]
struct Equaliser {
    std::vector<Band> bands[2]; ///< the bands of each of the two sets
    std::vector<double> block;  ///< samples of a block: block[channel * blockFrames + frame]
    /// Whether no slice has been rendered since the start, so that heights have no value to ramp from.
    bool isFresh = true;
};

// ---- parameters ----

/// Returns  the index of the active set of bands.
/// [any]
int activeSet(const Unit& unit)
{
    return parameterValue(unit, kGraphicEQParam_NumberOfBands, kAudioUnitScope_Global, 0) >= 0.5f ? 1 : 0;
}

UInt32 activeBands(const Unit& unit, AudioUnitElement)
{
    return static_cast<UInt32>(bandSets[activeSet(unit)].count);
}

/// Returns  the gain in decibels that is set for a band of the active set; 0 while the unit is bypassed.
/// [any]
Float32 gainOf(const Unit& unit, std::size_t band)
{
    if (unit.isBypassed) return 0;
    return parameterValue(unit, static_cast<AudioUnitParameterID>(band), kAudioUnitScope_Global, 0);
}

// ---- rendering of a slice ----

/// Read the parameters into the bands. Returns whether all bands are flat.
bool updateBands(const Unit& unit, Equaliser& equaliser)
{
    bool areFlat = true;
    const int active = activeSet(unit);
    for (int set = 0; set < 2; ++set)
        for (std::size_t i = 0; i < equaliser.bands[set].size(); ++i) {
            Band& band = equaliser.bands[set][i];
            if (!band.isAvailable) continue;
            const Float32 decibels = set == active ? gainOf(unit, i) : 0;
            if (decibels != band.decibels) {
                band.decibels = decibels;
                band.height.rampTo(static_cast<Float32>(heightOf(decibels)));
            }
            if (equaliser.isFresh) band.height = {band.height.to, band.height.to};
            areFlat &= band.isFlat();
        }
    equaliser.isFresh = false;
    return areFlat;
}

/// Filter a block of frames with one band. The block begins at frame `offset` of the slice.
void filterBlock(Band& band, UInt32 offset, UInt32 frames, std::vector<double>& block)
{
    BellCoefficients coefficients[blockFrames];
    const bool isRamping = offset < band.height.framesLeft;
    const UInt32 count = isRamping ? frames : 1;
    for (UInt32 i = 0; i < count; ++i)
        coefficients[i] = coefficientsOf(band.shape, static_cast<double>(band.height.at(offset + i)));

    double* samples = block.data();
    for (BellState& state : band.states) {
        if (isRamping)
            filter(coefficients, state, samples, frames);
        else
            filter(coefficients[0], state, samples, frames);
        flushState(state);
        samples += blockFrames;
    }
}

/// Filter a slice in place, with all bands.
void filterSlice(Equaliser& equaliser, const AudioBufferList& list, UInt32 frames)
{
    for (UInt32 offset = 0; offset < frames; offset += blockFrames) {
        const UInt32 count = std::min(blockFrames, frames - offset);
        for (UInt32 c = 0; c < list.mNumberBuffers; ++c)
            std::copy_n(static_cast<const Float32*>(list.mBuffers[c].mData) + offset, count,
                        equaliser.block.begin() + c * blockFrames);
        for (auto& bands : equaliser.bands)
            for (Band& band : bands)
                if (!band.isFlat()) filterBlock(band, offset, count, equaliser.block);
        for (UInt32 c = 0; c < list.mNumberBuffers; ++c)
            std::transform(equaliser.block.begin() + c * blockFrames,
                           equaliser.block.begin() + c * blockFrames + count,
                           static_cast<Float32*>(list.mBuffers[c].mData) + offset,
                           [](double sample) { return static_cast<Float32>(sample); });
    }
}

/// Advance the ramps past a slice, and clear the filter state of bands that have become flat.
void advanceBands(Equaliser& equaliser, UInt32 frames)
{
    for (auto& bands : equaliser.bands)
        for (Band& band : bands) {
            if (band.isFlat()) continue;
            band.height.advance(frames);
            if (band.isFlat()) std::fill(band.states.begin(), band.states.end(), BellState());
        }
}

// ---- properties ----

/// Get the tail time of the band that decays slowest; 0 if all bands are flat.
OSStatus getTailTime(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const double rate = unit.output(0).format.mSampleRate;
    const int set = activeSet(unit);
    Float64 seconds = 0;
    for (std::size_t i = 0; i < bandSets[set].count; ++i) {
        const double centre = bandSets[set].centres[i];
        const Float32 decibels = gainOf(unit, i);
        if (decibels != 0 && centre < rate / 2)
            seconds = std::max(seconds, decaySeconds(bellShape(centre, bandSets[set].octaves, rate),
                                                     heightOf(decibels), rate, inaudibleDecibels));
    }
    return give(data, seconds);
}

} // namespace

// clang-format off
const Property equaliserProperties[] = {
    // property                                scopes    element     bytes                  access             settable          get                    set        size of
    {kAudioUnitProperty_SupportedNumChannels,  inGlobal, anyElement, sizeof(AUChannelInfo), Access::readOnly,  Settable::always, getEqualChannelCounts, nullptr,   nullptr},
    {kAudioUnitProperty_TailTime,              inGlobal, anyElement, sizeof(Float64),       Access::readOnly,  Settable::always, getTailTime,           nullptr,   nullptr},
    {kAudioUnitProperty_BypassEffect,          inGlobal, anyElement, sizeof(UInt32),        Access::readWrite, Settable::always, getBypass,             setBypass, nullptr},
};

const Parameter equaliserParameters[] = {
    // id                           count             scope                   name               unit                              least most initial read only get      set      present
    {0,                             thirdOctaveBands, kAudioUnitScope_Global, "band",            kAudioUnitParameterUnit_Decibels, -20,  20,  0,      false,    nullptr, nullptr, activeBands},
    {kGraphicEQParam_NumberOfBands, 1,                kAudioUnitScope_Global, "number of bands", kAudioUnitParameterUnit_Indexed,  0,    1,   1,      false,    nullptr, nullptr, nullptr},
};
// clang-format on

OSStatus openEqualiser(Unit& unit)
{
    unit.state = new Equaliser;
    return noErr;
}

void destroyEqualiser(void* state) { delete static_cast<Equaliser*>(state); }

OSStatus initializeEqualiser(Unit& unit)
{
    const AudioStreamBasicDescription& format = unit.output(0).format;
    if (!pcm::isSameFormat(unit.input(0).format, format)) return kAudioUnitErr_FormatNotSupported;

    auto& equaliser = stateOf<Equaliser>(unit);
    for (int set = 0; set < 2; ++set) {
        auto& bands = equaliser.bands[set];
        bands.assign(bandSets[set].count, Band());
        for (std::size_t i = 0; i < bands.size(); ++i) {
            const double centre = bandSets[set].centres[i];
            bands[i].isAvailable = centre < format.mSampleRate / 2;
            if (bands[i].isAvailable)
                bands[i].shape = bellShape(centre, bandSets[set].octaves, format.mSampleRate);
            bands[i].states.assign(format.mChannelsPerFrame, BellState());
        }
    }
    equaliser.block.assign(std::size_t{format.mChannelsPerFrame} * blockFrames, 0);
    equaliser.isFresh = true;
    return noErr;
}

void resetEqualiser(Unit& unit)
{
    auto& equaliser = stateOf<Equaliser>(unit);
    for (auto& bands : equaliser.bands)
        for (Band& band : bands) std::fill(band.states.begin(), band.states.end(), BellState());
    equaliser.isFresh = true;
}

OSStatus renderEqualiser(Unit& unit, Slice& slice)
{
    auto& equaliser = stateOf<Equaliser>(unit);
    if (updateBands(unit, equaliser)) return passThrough(unit, slice);

    AudioUnitRenderActionFlags flags = slice.flags;
    const OSStatus status = pullInto(slice.out, 0, unit, 0, flags, slice.time, slice.frames);
    // The output may be audible although the input is silent, because the bands have a tail.
    slice.flags = flags & ~isSilence;
    filterSlice(equaliser, slice.out, slice.frames);
    advanceBands(equaliser, slice.frames);
    if (status) pcm::clear(slice.out);
    return status;
}

} // namespace kvxplatform::audiounit
