#include "tests/platform/soundmanager/sound.h"

#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>

namespace test {
namespace {

bool isBigEndian(const Form& form) { return form.format != k16BitLittleEndianFormat; }

bool hasSign(const Form& form) { return form.bits == 16 || form.format == kTwosComplement; }

} // namespace

SoundComponentData describe(const Form& form, long frames)
{
    return {0,
            form.format,
            form.channels,
            form.bits,
            static_cast<UnsignedFixed>(form.hertz * 65536),
            frames,
            nullptr,
            0};
}

std::size_t frameBytes(const Form& form) { return static_cast<std::size_t>(form.channels * form.bits / 8); }

Samples decode(const Form& form, const Bytes& bytes)
{
    Samples samples;
    if (form.bits == 8) {
        for (Byte byte : bytes)
            samples.push_back(hasSign(form) ? static_cast<SInt8>(byte) / 128.0 : (byte - 128) / 128.0);
        return samples;
    }
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const int high = bytes[isBigEndian(form) ? i : i + 1], low = bytes[isBigEndian(form) ? i + 1 : i];
        samples.push_back(static_cast<SInt16>(high << 8 | low) / 32768.0);
    }
    return samples;
}

Bytes encode(const Form& form, const Samples& samples)
{
    const int full = 1 << (form.bits - 1);
    Bytes bytes;
    for (double sample : samples) {
        const double nearest = std::nearbyint(sample * full); // rounds ties to even
        const int value = static_cast<int>(std::fmin(std::fmax(nearest, -full), full - 1));
        if (form.bits == 8) {
            bytes.push_back(static_cast<Byte>(hasSign(form) ? value : value + 128));
            continue;
        }
        const auto high = static_cast<Byte>(value >> 8), low = static_cast<Byte>(value);
        bytes.push_back(isBigEndian(form) ? high : low);
        bytes.push_back(isBigEndian(form) ? low : high);
    }
    return bytes;
}

Samples fold(const Samples& samples, int from, int to)
{
    if (from == to) return samples;
    Samples folded;
    for (std::size_t i = 0; i < samples.size(); i += static_cast<std::size_t>(from)) {
        if (from == 1)
            folded.insert(folded.end(), 2, samples[i]);
        else
            folded.push_back((samples[i] + samples[i + 1]) / 2);
    }
    return folded;
}

Bytes noise(const Form& form, std::size_t frames, unsigned seed)
{
    std::mt19937 next(seed);
    Bytes bytes(frames * frameBytes(form));
    for (Byte& byte : bytes) byte = static_cast<Byte>(next() >> 24);
    return bytes;
}

Buffer::Buffer(const Form& form, Bytes s) : block{}, samples(std::move(s))
{
    samples.reserve(1); // so that an empty buffer has a valid address
    block.recordSize = sizeof block;
    block.desc = describe(form, static_cast<long>(samples.size() / frameBytes(form)));
    block.desc.buffer = samples.data();
    block.rateMultiplier = 0x10000;
    block.leftVolume = block.rightVolume = kFullVolume;
    block.result = 1;
    block.refCon = reinterpret_cast<long>(this);
    block.completionRtn = [](SoundParamBlockPtr* done) -> Boolean {
        Buffer& buffer = *reinterpret_cast<Buffer*>((*done)->refCon);
        ++buffer.completions;
        buffer.result = buffer.block.result;
        buffer.thread = std::this_thread::get_id();
        // The function is copied, because the call may replace `onCompletion`.
        if (const auto call = buffer.onCompletion) call();
        return true;
    };
}

Mixer::Mixer(const Form& f, long blockFrames) : form(f)
{
    SoundComponentData output = describe(form, blockFrames);
    EXPECT_EQ(OpenMixerSoundComponent(&output, 0, &instance), noErr);
}

Mixer::~Mixer()
{
    if (instance) EXPECT_EQ(CloseMixerSoundComponent(instance), noErr);
}

SoundSource Mixer::add()
{
    SoundSource source = nullptr;
    EXPECT_EQ(SoundComponentAddSource(instance, &source), noErr);
    EXPECT_NE(source, nullptr);
    return source;
}

ComponentResult Mixer::play(SoundSource source, Buffer& buffer, long actions)
{
    return SoundComponentPlaySourceBuffer(instance, source, &buffer.block, actions);
}

Bytes Mixer::fetch()
{
    SoundComponentDataPtr data = nullptr;
    EXPECT_EQ(SoundComponentGetSourceData(instance, &data), noErr);
    if (!data) return {};
    return Bytes(data->buffer, data->buffer + static_cast<std::size_t>(data->sampleCount) * frameBytes(form));
}

Bytes Mixer::fetchAll()
{
    Bytes all;
    for (Bytes block = fetch(); !block.empty(); block = fetch())
        all.insert(all.end(), block.begin(), block.end());
    return all;
}

Bytes Mixer::playAll(SoundSource source, const Form& f, const Bytes& samples)
{
    Buffer buffer(f, samples);
    EXPECT_EQ(play(source, buffer), noErr);
    Bytes all = fetchAll();
    EXPECT_EQ(buffer.completions, 1);
    return all;
}

long liveCount(const char* kind)
{
    KVXLiveCount rows[32];
    const std::uint32_t kinds = KVXPlatformGetLiveCounts(rows, 32);
    for (std::uint32_t i = 0; i < kinds; ++i)
        if (std::string(rows[i].kind) == kind) return static_cast<long>(rows[i].count);
    return 0;
}

} // namespace test
