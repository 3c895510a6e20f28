// The sample rates that the library tests on hardware, and that a device lists if it supports every rate.
#pragma once

namespace kvxplatform::hal {

inline constexpr double commonRates[] = {8000,  11025, 16000, 22050, 24000,  32000, 44100,
                                         48000, 64000, 88200, 96000, 176400, 192000}; // in Hz

} // namespace kvxplatform::hal
