#include "tests/platform/augraph/player_chain.h"

namespace test {

float sample(std::size_t frame, UInt32 channel)
{
    auto bits = static_cast<std::uint32_t>(frame * 64 + channel) * 2654435761u;
    bits ^= bits >> 15;
    bits *= 2246822519u;
    bits ^= bits >> 13;
    const float value = static_cast<float>(static_cast<std::int32_t>(bits) >> 8) / (1 << 23);
    return frame % 7 ? value : value / (1 << 20);
}

OSStatus Sound::render(void* context, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                       UInt32 frames, AudioBufferList* list)
{
    Sound& self = *static_cast<Sound*>(context);
    auto* out = static_cast<float*>(list->mBuffers[0].mData);
    for (UInt32 i = 0; i < frames; ++i, ++self.position)
        for (UInt32 c = 0; c < self.channels; ++c)
            *out++ = self.position < self.frames ? sample(self.position, c) : 0;
    return noErr;
}

Chain::Chain(const Case& which, Sound& sound) : fact_(which)
{
    output = graph.add('auou', fact_.output);
    speed = graph.add('aufc', 'vari');
    pitch = graph.add('aufc', fact_.pitch);
    equaliser = graph.add('aufx', 'greq');
    mixer = graph.add('aumx', 'mcmx');
    converter = graph.add('aufc', 'conv');
    EXPECT_EQ(converter, 6) << "six nodes";
    const AUNode path[] = {converter, mixer, equaliser, pitch, speed, output};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(graph.connect(path[i], path[i + 1]), noErr);
    EXPECT_EQ(AUGraphOpen(graph), noErr);

    set<UInt32>(mixer, kAudioUnitProperty_ElementCount, 1, 1);
    set<UInt32>(mixer, 3007, 1, 1); // the property 3007 turns metering on
    set<UInt32>(fact_.rates == timePitch ? speed : pitch, 21, 0, 1);
    EXPECT_EQ(graph.setCallback(converter, Sound::render, &sound), noErr);
    set(converter, kAudioUnitProperty_StreamFormat, 1, interleaved(fact_.rate, fact_.channels));
    for (const AUNode node : {converter, mixer, equaliser, pitch, speed})
        set(node, kAudioUnitProperty_StreamFormat, 2, canonical(fact_.rate, fact_.channels));
    if (fact_.limit)
        for (const AUNode node : {pitch, equaliser, mixer, converter, speed})
            set(node, kAudioUnitProperty_MaximumFramesPerSlice, 0, fact_.limit);
    EXPECT_EQ(AudioUnitSetParameter(graph.unit(equaliser), 10000, 0, 0, 1, 0), noErr);
}

void Chain::initialize()
{
    ASSERT_EQ(AUGraphInitialize(graph), noErr);
    set<UInt32>(pitch, kAudioUnitProperty_RenderQuality, 0, 127);
    set<UInt32>(speed, kAudioUnitProperty_RenderQuality, 0, 127);
}

} // namespace test
