#include "tests/platform/audiounit/feeder.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace test {

float noise(Float64 frame, UInt32 channel)
{
    std::uint32_t state =
        static_cast<std::uint32_t>(static_cast<std::int64_t>(frame)) * 2654435761u + channel * 40503u;
    state ^= state >> 15;
    state *= 2246822519u;
    state ^= state >> 13;
    return static_cast<float>(static_cast<int>(state % 255) - 127) / 128;
}

void putSample(const AudioStreamBasicDescription& format, float value, unsigned char* out)
{
    const UInt32 flags = format.mFormatFlags;
    const UInt32 channels = flags & 32 ? 1 : format.mChannelsPerFrame;
    const UInt32 bytes = format.mBytesPerFrame / channels;
    std::uint64_t bits = 0;
    if (flags & 1) {
        if (bytes == 4) {
            std::uint32_t word;
            std::memcpy(&word, &value, 4);
            bits = word;
        } else {
            const double wide = value;
            std::memcpy(&bits, &wide, 8);
        }
    } else {
        std::int64_t whole =
            std::llrint(std::ldexp(static_cast<double>(value), static_cast<int>(format.mBitsPerChannel) - 1));
        if (!(flags & 4)) whole += std::int64_t{1} << (format.mBitsPerChannel - 1);
        bits = static_cast<std::uint64_t>(whole);
        if (flags & 16) bits <<= bytes * 8 - format.mBitsPerChannel;
    }
    for (UInt32 i = 0; i < bytes; ++i)
        out[flags & 2 ? bytes - 1 - i : i] = static_cast<unsigned char>(bits >> 8 * i);
}

OSStatus Feeder::callback(void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                          UInt32 bus, UInt32 frames, AudioBufferList* list)
{
    Feeder& self = *static_cast<Feeder*>(context);
    ++self.calls;
    if (self.requests.size() < self.mostRequests)
        self.requests.push_back({bus, frames, *time, *flags, list->mNumberBuffers,
                                 list->mBuffers[0].mNumberChannels, list->mBuffers[0].mDataByteSize});
    if (self.status) return self.status;
    const bool nonInterleaved = self.format.mFormatFlags & 32;
    const UInt32 channels = self.format.mChannelsPerFrame;
    const UInt32 sample = self.format.mBytesPerFrame / (nonInterleaved ? 1 : channels);
    for (UInt32 frame = 0; frame < frames; ++frame)
        for (UInt32 c = 0; c < channels; ++c) {
            auto* out = static_cast<unsigned char*>(list->mBuffers[nonInterleaved ? c : 0].mData) +
                        frame * self.format.mBytesPerFrame + (nonInterleaved ? 0 : c * sample);
            putSample(self.format, self.valueOf(time->mSampleTime + frame, c), out);
        }
    return noErr;
}

} // namespace test
