// The bands of the graphic equaliser, at the preferred frequencies of ISO 266.
#pragma once

#include <cstddef>

namespace kvxplatform::audiounit {

struct BandSet {
    const double* centres; ///< centre frequencies in Hz
    std::size_t count;
    double octaves; ///< width of each band in octaves
};

// clang-format off
constexpr double octaveCentres[] = {31.5, 63, 125, 250, 500, 1000, 2000, 4000, 8000, 16000};
constexpr double thirdOctaveCentres[] = {
    20, 25, 31.5, 40, 50, 63, 80, 100, 125, 160, 200, 250, 315, 400, 500, 630, 800, 1000, 1250, 1600, 2000, 2500,
    3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000, 20000};
// clang-format on

constexpr std::size_t octaveBands = sizeof octaveCentres / sizeof(double);
constexpr std::size_t thirdOctaveBands = sizeof thirdOctaveCentres / sizeof(double);

/// The two sets of bands, indexed by the parameter that selects the number of bands.
constexpr BandSet bandSets[] = {
    {octaveCentres, octaveBands, 1},
    {thirdOctaveCentres, thirdOctaveBands, 1.0 / 3},
};

} // namespace kvxplatform::audiounit
