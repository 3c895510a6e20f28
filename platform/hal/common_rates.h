// The rates that are tested on hardware, and offered by devices that support every rate.
#pragma once

namespace kvxplatform::hal {

inline constexpr double commonRates[] = {8000,  11025, 16000, 22050, 24000,  32000, 44100,
                                         48000, 64000, 88200, 96000, 176400, 192000}; // Hz

} // namespace kvxplatform::hal
