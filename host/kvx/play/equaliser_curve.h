// Gains of the 31 equaliser bands of the file player, and named curves.
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

struct NamedCurve {
    const char* name;
    const char* purpose;
    Gains gains;
};

struct NamedCurves {
    const NamedCurve* first;
    std::size_t count;
};
NamedCurves namedCurves();

/// Read the name of a curve, in upper or lower case, or 31 numbers separated by commas.
/// Errors  throws WrongUsage.
Gains readGains(std::string_view text);

/// One line per named curve, with the purpose of the curve.
std::string formatNamedCurves();

} // namespace kvx
