// A rate unit that plays a sound, for tests.
#pragma once

#include "tests/platform/audiounit/sound.h"

#include <optional>

namespace test {

/// What a rate unit is set to; what the kind of unit does not have is left out.
struct Rates {
    OSType subType;
    double rate = 1, cents = 0;
    double overlap = 8; // of the newer time-pitch unit
};

class RateUnit {
public:
    RateUnit(const Rates& rates, Sound sound, double sampleRate = 44100, UInt32 limit = 1156);

    void set(AudioUnitParameterID id, double value) const;
    double get(AudioUnitParameterID id) const;
    void bypass(bool isOn) const;
    double seconds(AudioUnitPropertyID id) const { return unit.get<Float64>(id, 0, 0); } // latency, tail

    /// Play on; what has been played so far is in `heard`.
    void play(std::size_t frames, UInt32 slice = 512);

    Unit unit;
    Track track;
    Rendering rendering;
    Sound heard;
};

/// The frequency of a tone in frames [from, until), by its zeros.
double frequencyOf(const std::vector<Float32>& samples, std::size_t from, std::size_t until,
                   double sampleRate);

/// The frame behind the last one louder than this.
std::size_t endOf(const std::vector<Float32>& samples, double level);

/// The frame around which a sound's energy lies.
double middleOf(const std::vector<Float32>& samples);

double energyOf(const std::vector<Float32>& samples);

/// The largest second difference in frames [from, until): what a click has and a tone has not.
double largestBend(const std::vector<Float32>& samples, std::size_t from, std::size_t until);

/// That of a tone.
double bendOfTone(double hertz, double sampleRate, double amplitude);

/// The least of the peaks of pieces of `piece` frames in [from, until).
double leastPeak(const std::vector<Float32>& samples, std::size_t from, std::size_t until, std::size_t piece);

/// Where four samples that follow each other are in a sound of noise; none if they are nowhere.
std::optional<std::size_t> whereIs(const Float32* four, const std::vector<Float32>& sound);

} // namespace test
