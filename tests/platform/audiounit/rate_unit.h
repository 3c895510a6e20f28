// A rate unit with a sound as its source, and measurements of its output, for tests.
#pragma once

#include "tests/platform/audiounit/sound.h"

#include <optional>

namespace test {

/// The settings of a rate unit. Those that the unit does not have are ignored.
struct Rates {
    OSType subType;
    double rate = 1, cents = 0;
    double overlap = 8; ///< of the newer time-pitch unit
};

class RateUnit {
public:
    RateUnit(const Rates& rates, Sound sound, double sampleRate = 44100, UInt32 limit = 1156);

    void set(AudioUnitParameterID id, double value) const;
    double get(AudioUnitParameterID id) const;
    void bypass(bool isOn) const;
    double seconds(AudioUnitPropertyID id) const
    {
        return unit.get<Float64>(id, 0, 0);
    } ///< of latency or tail

    /// Render further frames and append them to `output`.
    void play(std::size_t frames, UInt32 slice = 512);

    Unit unit;
    Track track;
    Rendering rendering;
    Sound output;
};

/// The frequency of a tone in frames [from, until), by its zero crossings.
double frequencyOf(const std::vector<Float32>& samples, std::size_t from, std::size_t until,
                   double sampleRate);

/// The frame after the last one above a level.
std::size_t endOf(const std::vector<Float32>& samples, double level);

/// The centre of a sound's energy, in frames.
double energyCentreOf(const std::vector<Float32>& samples);

double energyOf(const std::vector<Float32>& samples);

/// The largest second difference in frames [from, until): large in a click, small in a tone.
double maxSecondDifference(const std::vector<Float32>& samples, std::size_t from, std::size_t until);

/// The largest second difference of a tone.
double secondDifferenceOfTone(double hertz, double sampleRate, double amplitude);

/// The smallest peak of the spans of `span` frames in [from, until).
double minPeak(const std::vector<Float32>& samples, std::size_t from, std::size_t until, std::size_t span);

/// The frame of a noise where four successive samples are found.
std::optional<std::size_t> findInNoise(const Float32* four, const std::vector<Float32>& sound);

} // namespace test
