// Gains of the 31 equaliser bands of the file player, and equaliser curves that the user chooses by name.
// All functions: [main].
#pragma once

#include <array>
#include <cstddef>
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

/// The table of the named equaliser curves: [first, first + count).
struct NamedCurves {
    const NamedCurve* first;
    std::size_t count;
};
NamedCurves namedCurves();

/// Read the name of an equaliser curve, in upper or lower case, or 31 numbers separated by commas.
/// Errors  throws WrongUsage.
Gains readGains(std::string_view text);

/// List the named equaliser curves, one line with name and purpose per curve.
std::string formatNamedCurves();

} // namespace kvx
