// Gains of the 31 equaliser bands of the file player, and equaliser curves that the user chooses by name.
// All functions: [main].
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kvx {

constexpr std::size_t bandCount = 31;
constexpr double lowestGain = -20, highestGain = 20; // decibels

/// Centre frequencies of the bands in Hz: thirds of an octave.
constexpr std::array<double, bandCount> bandCentres = {
    20,  25,   31.5, 40,   50,   63,   80,   100,  125,  160,  200,  250,   315,   400,   500,  630,
    800, 1000, 1250, 1600, 2000, 2500, 3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000, 20000};

/// One gain per band in decibels, from the lowest band to the highest.
using Gains = std::array<double, bandCount>;

/// An equaliser curve, such as "bass".
struct NamedCurve {
    const char* name;
    const char* purpose; ///< a clause for the user
    Gains gains;
};

/// The table of the named equaliser curves.
std::initializer_list<NamedCurve> namedCurves();

/// Read the name of an equaliser curve, in upper or lower case, or 31 numbers separated by commas.
/// Errors  throws WrongUsage.
Gains readGains(std::string_view text);

/// Describe the equaliser for `--eq list`: name and purpose of each named curve, then a table with a row per
/// band, its centre frequency and its gain in each curve.
std::string formatNamedCurves();

} // namespace kvx
