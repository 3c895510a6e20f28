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

/// List the named equaliser curves, one line with name and purpose per curve.
std::string formatNamedCurves();

} // namespace kvx
