#include "tests/player/slice.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace test {

void Slice::Free::operator()(void* memory) const { std::free(memory); }

Slice::Slice(const std::vector<BufferLayout>& layouts, int inUse)
    : layouts_(layouts), inUse_(inUse < 0 ? layouts.size() : static_cast<std::size_t>(inUse))
{
    list_.reset(static_cast<AudioBufferList*>(
        std::calloc(1, offsetof(AudioBufferList, mBuffers) + layouts.size() * sizeof(AudioBuffer))));
    list_->mNumberBuffers = static_cast<UInt32>(inUse_);
    for (const BufferLayout& each : layouts_) {
        std::vector<unsigned char> memory(each.bytes + 2 * guardBytes, guard);
        std::fill_n(memory.begin() + guardBytes, each.bytes, before);
        memory_.push_back(std::move(memory));
    }
    for (std::size_t b = 0; b < layouts_.size(); ++b) {
        AudioBuffer& buffer = list_->mBuffers[b];
        buffer.mNumberChannels = layouts_[b].channels;
        buffer.mDataByteSize = layouts_[b].bytes;
        buffer.mData = layouts_[b].isAbsent ? nullptr : memory_[b].data() + guardBytes;
    }
}

const std::vector<unsigned char>& Slice::bytes(std::size_t buffer) const
{
    content_.resize(layouts_.size());
    const auto* begin = memory_[buffer].data() + guardBytes;
    content_[buffer].assign(begin, begin + layouts_[buffer].bytes);
    return content_[buffer];
}

std::vector<float> Slice::floats(std::size_t buffer) const
{
    std::vector<float> values(layouts_[buffer].bytes / sizeof(float));
    if (!values.empty())
        std::memcpy(values.data(), memory_[buffer].data() + guardBytes, values.size() * sizeof(float));
    return values;
}

float Slice::floatBefore()
{
    float value;
    std::memset(&value, before, sizeof value);
    return value;
}

bool Slice::isIntact() const
{
    bool intact = list_->mNumberBuffers == inUse_;
    for (std::size_t b = 0; b < layouts_.size(); ++b) {
        const AudioBuffer& buffer = list_->mBuffers[b];
        const std::vector<unsigned char>& memory = memory_[b];
        intact &= buffer.mNumberChannels == layouts_[b].channels && buffer.mDataByteSize == layouts_[b].bytes;
        for (std::size_t i = 0; i < memory.size(); ++i) {
            const bool isInside = i >= guardBytes && i < guardBytes + layouts_[b].bytes;
            const bool mayChange = isInside && b < inUse_ && !layouts_[b].isAbsent;
            if (!mayChange) intact &= memory[i] == (isInside ? before : guard);
        }
    }
    return intact;
}

OSStatus runCycle(const PlayerObject& object, Slice& slice, AudioDeviceID device)
{
    const AudioTimeStamp time = {};
    AudioBufferList noInput = {};
    return object->ioProc(device, &time, &noInput, &time, &slice.list(), &time, &object.data());
}

std::vector<float> render(const PlayerObject& object, std::uint32_t frames, std::uint32_t channels)
{
    Slice slice({layout(channels, frames)});
    runCycle(object, slice);
    return slice.floats();
}

} // namespace test
