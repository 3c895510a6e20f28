#include "tests/auplayer/rendered_file.h"

#include "auplayer/render.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace test {

Slice::Slice(const std::vector<BufferLayout>& layouts)
    : layouts_(layouts), list_(new char[offsetof(AudioBufferList, mBuffers) +
                                        std::max<std::size_t>(layouts.size(), 1) * sizeof(AudioBuffer)]())
{
    list().mNumberBuffers = static_cast<UInt32>(layouts.size());
    for (std::size_t i = 0; i < layouts.size(); ++i) {
        memory_.emplace_back(new unsigned char[layouts[i].bytes]);
        std::fill_n(memory_[i].get(), layouts[i].bytes, before);
        AudioBuffer& buffer = list().mBuffers[i];
        buffer.mNumberChannels = layouts[i].channels;
        buffer.mDataByteSize = layouts[i].bytes;
        buffer.mData = layouts[i].isAbsent ? nullptr : memory_[i].get();
    }
}

std::vector<unsigned char> Slice::bytes(std::size_t buffer) const
{
    return {memory_[buffer].get(), memory_[buffer].get() + layouts_[buffer].bytes};
}

Bits Slice::bits(std::size_t buffer) const
{
    Bits bits(layouts_[buffer].bytes / sizeof(float));
    if (!bits.empty()) std::memcpy(bits.data(), memory_[buffer].get(), bits.size() * sizeof(float));
    return bits;
}

bool Slice::isIntact()
{
    bool isSame = list().mNumberBuffers == layouts_.size();
    for (std::size_t i = 0; i < layouts_.size(); ++i) {
        const AudioBuffer& buffer = list().mBuffers[i];
        isSame &= buffer.mNumberChannels == layouts_[i].channels &&
                  buffer.mDataByteSize == layouts_[i].bytes &&
                  buffer.mData == (layouts_[i].isAbsent ? nullptr : memory_[i].get());
    }
    return isSame;
}

RenderedFile::RenderedFile(const Bits& samples, std::uint32_t channels) : samples_(new float[samples.size()])
{
    if (!samples.empty()) std::memcpy(samples_.get(), samples.data(), samples.size() * sizeof(float));
    AudioStreamBasicDescription& format = audio_.format;
    format.mSampleRate = 44100;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags = kAudioFormatFlagsNativeFloatPacked;
    format.mBytesPerPacket = format.mBytesPerFrame = 4 * channels;
    format.mFramesPerPacket = 1;
    format.mChannelsPerFrame = channels;
    format.mBitsPerChannel = 32;
    audio_.frameCount = static_cast<UInt32>(samples.size() / channels);
    audio_.samples = samples_.get();
    audio_.byteSize = static_cast<UInt32>(samples.size() * sizeof(float));
    data_.loadedAudio = &audio_;
    data_.endFrame = audio_.frameCount;
    data_.loopIn = data_.loopOut = auplayer::unset;
}

void RenderedFile::loop(double in, double out)
{
    data_.loopIn = in;
    data_.loopOut = out;
    data_.isLooping = true;
}

void RenderedFile::render(Slice& slice, std::uint32_t frames)
{
    AudioUnitRenderActionFlags flags = 0;
    const AudioTimeStamp time = {};
    EXPECT_EQ(auplayer::renderInput(&data_, &flags, &time, 0, frames, &slice.list()), 0);
    EXPECT_TRUE(slice.isIntact());
    EXPECT_EQ(flags, 0u);
}

Bits RenderedFile::render(std::uint32_t frames)
{
    Slice slice({{channels(), 4 * channels() * frames}});
    render(slice, frames);
    return slice.bits();
}

Bits noise(std::uint32_t frames, std::uint32_t channels)
{
    Bits bits(frames * channels);
    std::uint32_t state = 0x7F800001; // bits of a signalling not-a-number, which arithmetic would change
    for (std::uint32_t& each : bits) {
        each = state;
        state = state * 1664525u + 1013904223u; // a random generator of full period, so that no value repeats
    }
    return bits;
}

Bits excerpt(const Bits& samples, std::uint32_t channels, std::uint64_t begin, std::uint32_t count)
{
    Bits bits(std::size_t{count} * channels);
    for (std::size_t i = 0; i < bits.size(); ++i) {
        const std::uint64_t from = begin * channels + i;
        if (from < samples.size()) bits[i] = samples[static_cast<std::size_t>(from)];
    }
    return bits;
}

} // namespace test
