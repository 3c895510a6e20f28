#include "tests/support/reference_player.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace reference {

namespace {

/// Convert a number to an integer as the processor does: truncate toward zero; NaN and values out of range
/// give the lowest integer.
std::int64_t truncated(double value)
{
    const double whole = std::trunc(value);
    if (whole >= -std::ldexp(1.0, 63) && whole < std::ldexp(1.0, 63)) return static_cast<std::int64_t>(whole);
    return std::numeric_limits<std::int64_t>::min();
}

/// Add two integers with wrap-around on overflow.
std::int64_t sum(std::int64_t a, std::int64_t b)
{
    std::int64_t result;
    (void)__builtin_add_overflow(a, b, &result);
    return result;
}

/// Write a value to the float at `index` of a buffer. A write outside the buffer has no effect.
void put(Buffer& buffer, std::uint64_t index, float value)
{
    if (buffer.isAbsent || (index + 1) * sizeof value > buffer.bytes.size()) return;
    std::memcpy(&buffer.bytes[static_cast<std::size_t>(index) * sizeof value], &value, sizeof value);
}

} // namespace

void Player::start(float rateOfDevice)
{
    if (isRunning) return;
    position = relativePosition = 0;
    base = 0;
    deviceSampleRate = rateOfDevice;
    isRunning = true;
}

bool Player::takeNext()
{
    if (waiting.empty()) return false;
    current = waiting.front();
    waiting.pop_front();
    relativePosition = 0;
    return true;
}

float Player::sample(std::int64_t index)
{
    if (!current) return 0;
    const std::int64_t offset = sum(index, -base);
    if (offset < 0) return 0;
    const auto size = static_cast<std::int64_t>(current->size());
    if (offset < size) return (*current)[static_cast<std::size_t>(offset)];

    base += size;
    current.reset();
    if (!takeNext()) return 0;
    const std::int64_t inNext = offset - size;
    if (inNext >= static_cast<std::int64_t>(current->size()))
        return 0; // the index is past the end of the next buffer
    return (*current)[static_cast<std::size_t>(inNext)];
}

void Player::leaveDevice()
{
    calls.push_back("stop");
    calls.push_back("remove");
    isRunning = false;
}

void Player::silence(Slice& slice) const
{
    for (std::size_t b = 0; b < slice.inUse; ++b)
        if (!slice.buffers[b].isAbsent)
            std::fill(slice.buffers[b].bytes.begin(), slice.buffers[b].bytes.end(),
                      static_cast<unsigned char>(0));
}

void Player::render(Slice& slice)
{
    const Buffer& first = slice.buffers[0];
    const std::uint32_t frames =
        first.channels ? static_cast<std::uint32_t>(first.bytes.size()) / 4 / first.channels : 0;

    if (stopRequested) {
        silence(slice);
        if (noUnderflow) {
            stopRequested = false;
            hadUnderflow = true;
        } else {
            leaveDevice();
        }
        return;
    }
    if (!current && !takeNext()) {
        silence(slice);
        if (noUnderflow)
            hadUnderflow = true;
        else
            leaveDevice();
        return;
    }
    if (numberOfChannels == 2)
        renderStereo(slice, frames);
    else
        renderMono(slice, frames);
}

void Player::renderMono(Slice& slice, std::uint32_t frames)
{
    const float quotient = sampleRate / deviceSampleRate;
    const double step = quotient;
    double pos = position;
    std::int64_t last = -11111111;
    float s0 = 0, s1 = 0;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        const std::int64_t k = truncated(pos);
        if (k != last) {
            s0 = sample(k);
            s1 = sample(sum(k, 1));
            last = k;
        }
        relativePosition += step;
        const double t = pos - static_cast<double>(k);
        const double weighted = static_cast<double>(s1) * t + (1.0 - t) * static_cast<double>(s0);
        for (std::size_t b = 0; b < slice.inUse; ++b)
            for (std::uint32_t c = 0; c < slice.buffers[b].channels; ++c)
                put(slice.buffers[b], std::uint64_t{frame} * slice.buffers[b].channels + c,
                    static_cast<float>(weighted));
        pos += step;
    }
    position = pos;
}

void Player::renderStereo(Slice& slice, std::uint32_t frames)
{
    const float quotient = sampleRate / deviceSampleRate;
    const double step = quotient;
    double pos = position;
    std::int64_t last = -10;
    float left0 = 0, right0 = 0, left1 = 0, right1 = 0;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        const std::int64_t k = truncated(pos), j = sum(k, k);
        if (j != last) {
            left0 = sample(j);
            right0 = sample(sum(j, 1));
            left1 = sample(sum(j, 2));
            right1 = sample(sum(j, 3));
            last = j;
        }
        relativePosition += step;
        const auto t = static_cast<float>(pos - static_cast<double>(k));
        const float rest = 1 - t;
        const float left = t * left1 + rest * left0, right = t * right1 + rest * right0;
        for (std::size_t b = 0; b < slice.inUse; ++b) {
            Buffer& buffer = slice.buffers[b];
            const std::uint64_t slot = std::uint64_t{frame} * buffer.channels;
            put(buffer, slot, left);
            if (buffer.channels != 1) put(buffer, slot + 1, right); // a single channel has no second sample
        }
        pos += step;
    }
    position = pos;
}

} // namespace reference
