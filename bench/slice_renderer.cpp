#include "bench/slice_renderer.h"

#include "player/render.h"

namespace bench {

SliceRenderer::SliceRenderer(const std::vector<float>& data, int channels, double from, double to,
                             std::uint32_t frames, std::uint32_t outputChannels)
    : player(), out(std::size_t{frames} * outputChannels), list()
{
    player.sampleRate = static_cast<float>(from);
    player.deviceSampleRate = static_cast<float>(to);
    player.numberOfChannels = channels;
    player.isRunning = true;
    player.current = {static_cast<std::int32_t>(data.size()), const_cast<float*>(data.data())};
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {outputChannels, static_cast<UInt32>(out.size() * sizeof(float)), out.data()};
    lastPosition =
        static_cast<double>(data.size() / static_cast<std::size_t>(channels)) - (frames + 2) * step();
}

void SliceRenderer::render()
{
    if (player.outputPosition >= lastPosition) player.outputPosition = 0;
    player::MyPlayIOProc(0, nullptr, nullptr, nullptr, &list, nullptr, &player);
}

} // namespace bench
