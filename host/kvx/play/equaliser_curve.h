// Gains of the file player's 31 equaliser bands, and curves of them that have a name.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace kvx {

constexpr std::size_t bandCount = 31;
constexpr double lowestGain = -20, highestGain = 20; // decibels

/// Decibels, from the lowest band to the highest.
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

/// The gains that a user means: the name of a curve, without regard to case, or 31 numbers with commas
/// between. Throws Failure: what is wrong, and what there is.
Gains readGains(std::string_view text);

/// All names with their purpose, a line each.
std::string printNamedCurves();

} // namespace kvx
