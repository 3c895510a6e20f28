#include "tests/platform/audiounit/unit.h"

#include <cstddef>
#include <cstring>

namespace test {

AudioStreamBasicDescription pcm(Float64 rate, UInt32 channels, UInt32 bits, UInt32 flags, UInt32 bytes)
{
    if (!bytes) bytes = (bits + 7) / 8;
    const UInt32 frame = flags & isNonInterleaved ? bytes : bytes * channels;
    return {rate, 'lpcm', flags, frame, 1, frame, channels, bits, 0};
}

AudioStreamBasicDescription canonical(Float64 rate, UInt32 channels)
{
    return pcm(rate, channels, 32, isFloat | isPacked | isNonInterleaved);
}

AudioStreamBasicDescription interleaved(Float64 rate, UInt32 channels)
{
    return pcm(rate, channels, 32, isFloat | isPacked);
}

bool operator==(const AudioStreamBasicDescription& a, const AudioStreamBasicDescription& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

List::List(const AudioStreamBasicDescription& format, UInt32 frames)
{
    const bool nonInterleaved = format.mFormatFlags & isNonInterleaved;
    const UInt32 buffers = nonInterleaved ? format.mChannelsPerFrame : 1;
    storage.resize((offsetof(AudioBufferList, mBuffers) + (buffers + 1) * sizeof(AudioBuffer)) / 8 + 1);
    memory.assign(buffers, std::vector<unsigned char>(frames * format.mBytesPerFrame, 0xEE));
    list().mNumberBuffers = buffers;
    for (UInt32 i = 0; i < buffers; ++i)
        list().mBuffers[i].mNumberChannels = nonInterleaved ? 1 : format.mChannelsPerFrame;
    restore();
}

void List::clearPointers()
{
    for (UInt32 i = 0; i < list().mNumberBuffers; ++i) {
        list().mBuffers[i].mData = nullptr;
        list().mBuffers[i].mDataByteSize = 0;
    }
}

void List::restore()
{
    for (UInt32 i = 0; i < list().mNumberBuffers; ++i) {
        list().mBuffers[i].mData = memory[i].data();
        list().mBuffers[i].mDataByteSize = static_cast<UInt32>(memory[i].size());
    }
}

AudioTimeStamp sampleTime(Float64 frames)
{
    AudioTimeStamp time = {};
    time.mSampleTime = frames;
    time.mFlags = kAudioTimeStampSampleTimeValid;
    return time;
}

} // namespace test
