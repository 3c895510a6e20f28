#include "host/kvx/files/pcm16.h"

#include "host/runtime/support/checked_size.h"

#include <algorithm>
#include <cmath>

namespace kvx {

std::int16_t toPcm16(float sample)
{
    if (std::isnan(sample)) return 0;
    return std::int16_t(std::lrint(std::clamp(sample * 32768.0f, -32768.0f, 32767.0f)));
}

std::size_t Pcm16Reader::read(std::int16_t* out, std::size_t frames)
{
    const auto channels = std::size_t(file_.format().channels);
    decoded_.resize(host::checkedSize(frames, channels));
    const std::size_t got = file_.read(decoded_.data(), frames);
    for (std::size_t frame = 0; frame < got; ++frame)
        for (std::size_t channel = 0; channel < 2; ++channel)
            out[frame * 2 + channel] =
                toPcm16(decoded_[frame * channels + std::min(channel, channels - 1)] * gain_);
    return got;
}

} // namespace kvx
