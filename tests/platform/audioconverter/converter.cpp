#include "tests/platform/audioconverter/converter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace test {

OSStatus Sound::procedure(AudioConverterRef, UInt32* packets, AudioBufferList* list,
                          AudioStreamPacketDescription**, void* context)
{
    Sound& sound = *static_cast<Sound*>(context);
    *packets = std::min({*packets, sound.most, sound.frames - sound.at});
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i) {
        list->mBuffers[i].mData = sound.buffers[i].data() + sound.at * sound.format.mBytesPerFrame;
        list->mBuffers[i].mDataByteSize = *packets * sound.format.mBytesPerFrame;
    }
    sound.at += *packets;
    return noErr;
}

Sound soundOf(Float64 rate, UInt32 channels, const std::vector<float>& samples)
{
    Sound sound{interleaved(rate, channels), {}, static_cast<UInt32>(samples.size()) / channels};
    sound.buffers.emplace_back(samples.size() * sizeof(float));
    if (!samples.empty())
        std::memcpy(sound.buffers[0].data(), samples.data(), samples.size() * sizeof(float));
    return sound;
}

UInt32 fill(AudioConverterRef converter, AudioConverterComplexInputDataProc procedure, void* context,
            UInt32 frames, List& list, OSStatus expected)
{
    UInt32 packets = frames;
    const OSStatus status =
        AudioConverterFillComplexBuffer(converter, procedure, context, &packets, list.get(), nullptr);
    EXPECT_EQ(status, expected);
    return packets;
}

std::vector<float> drained(AudioConverterRef converter, Sound& sound, UInt32 channels, UInt32 atATime)
{
    std::vector<float> all;
    List list(interleaved(1, channels), atATime);
    for (;;) {
        list.restore();
        const UInt32 got = fill(converter, Sound::procedure, &sound, atATime, list);
        if (!got) return all;
        const auto* samples = static_cast<const float*>(list[0].mData);
        all.insert(all.end(), samples, samples + got * channels);
    }
}

} // namespace test
