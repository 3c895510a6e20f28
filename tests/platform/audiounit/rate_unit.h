// Test tools: a rate unit with a sound as its source, and measurements of the unit's output.
#pragma once

#include "tests/platform/audiounit/sound.h"

#include <optional>

namespace test {

/// The settings of a rate unit. Settings that the unit does not have are ignored.
struct Rates {
    OSType subType;
    double rate = 1, cents = 0;
    double overlap = 8; ///< overlap, a setting of the newer time-pitch unit
};

class RateUnit {
public:
    RateUnit(const Rates& rates, Sound sound, double sampleRate = 44100, UInt32 limit = 1156);

    void set(AudioUnitParameterID id, double value) const;
    double get(AudioUnitParameterID id) const;
    void bypass(bool isOn) const;
    /// Returns  the value of the latency or the tail property.
    double seconds(AudioUnitPropertyID id) const { return unit.get<Float64>(id, 0, 0); }

    /// Render further frames and append them to `output`.
    void play(std::size_t frames, UInt32 slice = 512);

    Unit unit;
    Track track;
    Rendering rendering;
    Sound output;
};

/// Returns  the frequency of a tone in frames [from, until), measured by its zero crossings.
double frequencyOf(const std::vector<Float32>& samples, std::size_t from, std::size_t until,
                   double sampleRate);

/// Returns  the number of the frame after the last sample above a level.
std::size_t endOf(const std::vector<Float32>& samples, double level);

/// Returns  the centre of a sound's energy, in frames.
double energyCentreOf(const std::vector<Float32>& samples);

double energyOf(const std::vector<Float32>& samples);

/// Returns  the largest second difference in frames [from, until), which is large in a click and small in a
///          tone.
double maxSecondDifference(const std::vector<Float32>& samples, std::size_t from, std::size_t until);

/// Returns  the largest second difference of a tone.
double secondDifferenceOfTone(double hertz, double sampleRate, double amplitude);

/// Divide frames [from, until) into spans of `span` frames. Returns the smallest of the spans' peaks.
double minPeak(const std::vector<Float32>& samples, std::size_t from, std::size_t until, std::size_t span);

/// Returns  the frame at which a noise contains four successive samples; no value if the noise does not
///          contain them.
std::optional<std::size_t> findInNoise(const Float32* four, const std::vector<Float32>& sound);

} // namespace test
