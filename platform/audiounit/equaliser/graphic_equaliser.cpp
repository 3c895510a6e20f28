// The graphic equaliser: bells in a row, one for each band that is not flat.
//
// A band that changes glides, from flat and to flat too. The bands of the set that is not in force are flat,
// and so are all of a bypassed equaliser; when none is anything else, samples pass as they are. So nothing
// that is set while sound runs makes a click.
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

constexpr UInt32 pieceFrames = 64;    // filtered at a time, in double
constexpr double inaudibleFall = 100; // decibels
constexpr AudioUnitRenderActionFlags isSilence = kAudioUnitRenderAction_OutputIsSilence;

struct Band {
    BellShape shape{};
    bool isHeard = false; // its centre is below half the rate
    Float32 decibels = 0; // what the height glides to
    pcm::Gain height = {1, 1};
    std::vector<BellState> states; // one a channel

    bool isFlat() const { return height.isUnity(); }
};

// [audio & in a slice], or while the unit is not initialised
struct Equaliser {
    std::vector<Band> bands[2]; // of each set
    std::vector<double> work;   // a piece: [channel * pieceFrames + frame]
    bool isFresh = true;        // nothing has been heard yet: there is nothing to glide from
};

} // namespace

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
            bands[i].isHeard = centre < format.mSampleRate / 2;
            if (bands[i].isHeard)
                bands[i].shape = bellShape(centre, bandSets[set].octaves, format.mSampleRate);
            bands[i].states.assign(format.mChannelsPerFrame, BellState());
        }
    }
    equaliser.work.assign(std::size_t{format.mChannelsPerFrame} * pieceFrames, 0);
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

// ---- parameters ----

namespace {

/// The number of the set in force. Thread [any].
int setInForce(const Unit& unit)
{
    return parameterValue(unit, kGraphicEQParam_NumberOfBands, kAudioUnitScope_Global, 0) >= 0.5f ? 1 : 0;
}

UInt32 bandsInForce(const Unit& unit, AudioUnitElement)
{
    return static_cast<UInt32>(bandSets[setInForce(unit)].count);
}

/// What a band of the set in force shall do now, in decibels. Thread [any].
Float32 wanted(const Unit& unit, std::size_t band)
{
    if (unit.isBypassed) return 0;
    return parameterValue(unit, static_cast<AudioUnitParameterID>(band), kAudioUnitScope_Global, 0);
}

// ---- a slice ----

/// Take on what the parameters say. Returns whether all bands are flat.
bool turnBands(const Unit& unit, Equaliser& equaliser)
{
    bool areFlat = true;
    const int inForce = setInForce(unit);
    for (int set = 0; set < 2; ++set)
        for (std::size_t i = 0; i < equaliser.bands[set].size(); ++i) {
            Band& band = equaliser.bands[set][i];
            if (!band.isHeard) continue;
            const Float32 decibels = set == inForce ? wanted(unit, i) : 0;
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

/// A piece through one band, from frame `offset` of the slice on.
void filterPiece(Band& band, UInt32 offset, UInt32 frames, std::vector<double>& work)
{
    BellCoefficients each[pieceFrames];
    const bool glides = offset < band.height.framesLeft;
    const UInt32 different = glides ? frames : 1;
    for (UInt32 i = 0; i < different; ++i)
        each[i] = coefficientsOf(band.shape, static_cast<double>(band.height.at(offset + i)));

    double* samples = work.data();
    for (BellState& state : band.states) {
        if (glides)
            filter(each, state, samples, frames);
        else
            filter(each[0], state, samples, frames);
        settle(state);
        samples += pieceFrames;
    }
}

/// In place.
void filterSlice(Equaliser& equaliser, const AudioBufferList& list, UInt32 frames)
{
    for (UInt32 offset = 0; offset < frames; offset += pieceFrames) {
        const UInt32 now = std::min(pieceFrames, frames - offset);
        for (UInt32 c = 0; c < list.mNumberBuffers; ++c)
            std::copy_n(static_cast<const Float32*>(list.mBuffers[c].mData) + offset, now,
                        equaliser.work.begin() + c * pieceFrames);
        for (auto& bands : equaliser.bands)
            for (Band& band : bands)
                if (!band.isFlat()) filterPiece(band, offset, now, equaliser.work);
        for (UInt32 c = 0; c < list.mNumberBuffers; ++c)
            std::transform(equaliser.work.begin() + c * pieceFrames,
                           equaliser.work.begin() + c * pieceFrames + now,
                           static_cast<Float32*>(list.mBuffers[c].mData) + offset,
                           [](double sample) { return static_cast<Float32>(sample); });
    }
}

/// The slice is over: go on gliding in the next, and forget what a band that has become flat held.
void passBands(Equaliser& equaliser, UInt32 frames)
{
    for (auto& bands : equaliser.bands)
        for (Band& band : bands) {
            if (band.isFlat()) continue;
            band.height.advance(frames);
            if (band.isFlat()) std::fill(band.states.begin(), band.states.end(), BellState());
        }
}

} // namespace

OSStatus renderEqualiser(Unit& unit, Slice& slice)
{
    auto& equaliser = stateOf<Equaliser>(unit);
    if (turnBands(unit, equaliser)) return passThrough(unit, slice);

    AudioUnitRenderActionFlags flags = slice.flags;
    const OSStatus status = pullInto(slice.out, 0, unit, 0, flags, slice.time, slice.frames);
    slice.flags = flags & ~isSilence; // bands go on sounding
    filterSlice(equaliser, slice.out, slice.frames);
    passBands(equaliser, slice.frames);
    if (status) pcm::clear(slice.out);
    return status;
}

// ---- what it says ----

namespace {

OSStatus getChannelCounts(Unit&, ElementAddress, void* data, UInt32&)
{
    return give(data, AUChannelInfo{-1, -1});
}

/// Until the band that sounds longest has become inaudible; 0 when all are flat.
OSStatus getTailTime(Unit& unit, ElementAddress, void* data, UInt32&)
{
    const double rate = unit.output(0).format.mSampleRate;
    const int set = setInForce(unit);
    Float64 seconds = 0;
    for (std::size_t i = 0; i < bandSets[set].count; ++i) {
        const double centre = bandSets[set].centres[i];
        const Float32 decibels = wanted(unit, i);
        if (decibels != 0 && centre < rate / 2)
            seconds = std::max(seconds, ringingSeconds(bellShape(centre, bandSets[set].octaves, rate),
                                                       heightOf(decibels), rate, inaudibleFall));
    }
    return give(data, seconds);
}

} // namespace

// clang-format off
const Property equaliserProperties[] = {
    // property                                scopes    element     bytes                  access             settable          get               set        size of
    {kAudioUnitProperty_SupportedNumChannels,  inGlobal, anyElement, sizeof(AUChannelInfo), Access::readOnly,  Settable::always, getChannelCounts, nullptr,   nullptr},
    {kAudioUnitProperty_TailTime,              inGlobal, anyElement, sizeof(Float64),       Access::readOnly,  Settable::always, getTailTime,      nullptr,   nullptr},
    {kAudioUnitProperty_BypassEffect,          inGlobal, anyElement, sizeof(UInt32),        Access::readWrite, Settable::always, getBypass,        setBypass, nullptr},
};

const Parameter equaliserParameters[] = {
    // id                           count             scope                   name               unit                              least most initial read only get      set      present
    {0,                             thirdOctaveBands, kAudioUnitScope_Global, "band",            kAudioUnitParameterUnit_Decibels, -20,  20,  0,      false,    nullptr, nullptr, bandsInForce},
    {kGraphicEQParam_NumberOfBands, 1,                kAudioUnitScope_Global, "number of bands", kAudioUnitParameterUnit_Indexed,  0,    1,   1,      false,    nullptr, nullptr, nullptr},
};
// clang-format on

} // namespace kvxplatform::audiounit
