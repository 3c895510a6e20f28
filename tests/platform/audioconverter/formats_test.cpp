// Conversion from every sample format to every other, compared with a reference, and the set of accepted
// formats.
#include "tests/platform/audioconverter/converter.h"
#include "tests/platform/audioconverter/plain_samples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace {

using namespace test;

/// Make samples of a format: edge cases, followed by random samples.
std::vector<std::uint64_t> samplesOf(const Kind& kind, UInt32 count)
{
    std::vector<std::uint64_t> raws;
    std::mt19937_64 random(kind.bits * 131 + kind.flags);
    if (kind.flags & isFloat) {
        constexpr double inf = std::numeric_limits<double>::infinity();
        for (const double value :
             {0.0, -0.0, 1.0, -1.0, 0.5, 1.5, -2.0, inf, -inf, 1e-40, 0.25 / 128, 0.5 / 128, 1.5 / 128,
              -0.5 / 32768, 2.5 / 32768, 127.5 / 128, 32767.5 / 32768, 0.99999999999, 1e30}) {
            std::uint64_t raw = 0;
            const auto narrow = static_cast<float>(value);
            if (kind.bytes == 8)
                std::memcpy(&raw, &value, 8);
            else
                std::memcpy(&raw, &narrow, 4);
            raws.push_back(raw);
        }
        const bool isWide = kind.bytes == 8;
        raws.push_back(isWide ? 0x7FF8000000001234u : 0x7FC01234u); // a quiet NaN
        raws.push_back(isWide ? 0xFFF0000000000001u : 0xFF800001u); // a signalling NaN
        while (raws.size() < count / 2) {
            const double value = std::uniform_real_distribution<double>(-1.1, 1.1)(random);
            const auto narrow = static_cast<float>(value);
            std::uint64_t raw = 0;
            std::memcpy(&raw, isWide ? static_cast<const void*>(&value) : &narrow, kind.bytes);
            raws.push_back(raw);
        }
    } else {
        const std::uint64_t top = std::uint64_t{1} << (kind.bytes * 8 - 1);
        for (const std::uint64_t raw :
             {std::uint64_t{0}, std::uint64_t{1}, top, top - 1, top + 1, 2 * top - 1})
            raws.push_back(raw);
    }
    const std::uint64_t mask = kind.bytes == 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << kind.bytes * 8) - 1;
    while (raws.size() < count) raws.push_back(random() & mask);
    raws.resize(count);
    return raws;
}

unsigned char* bytesAt(const AudioStreamBasicDescription& format, const Kind& kind,
                       std::vector<std::vector<unsigned char>>& buffers, UInt32 frame, UInt32 channel)
{
    const bool apart = format.mFormatFlags & isNonInterleaved;
    return buffers[apart ? channel : 0].data() + frame * format.mBytesPerFrame +
           (apart ? 0 : channel * kind.bytes);
}

Sound soundOf(const Kind& kind, const AudioStreamBasicDescription& format,
              const std::vector<std::uint64_t>& raws)
{
    const UInt32 channels = format.mChannelsPerFrame;
    const UInt32 frames = static_cast<UInt32>(raws.size()) / channels;
    const UInt32 buffers = format.mFormatFlags & isNonInterleaved ? channels : 1;
    Sound sound{format, std::vector<std::vector<unsigned char>>(buffers), frames};
    for (auto& buffer : sound.buffers) buffer.resize(frames * format.mBytesPerFrame);
    for (UInt32 frame = 0; frame < frames; ++frame)
        for (UInt32 c = 0; c < channels; ++c)
            putRaw(kind, raws[frame * channels + c], bytesAt(format, kind, sound.buffers, frame, c));
    return sound;
}

/// Convert between two formats in several calls, and compare the output with the reference.
void expectPair(const Kind& from, bool fromApart, const Kind& to, bool toApart, UInt32 channels)
{
    constexpr UInt32 frames = 120;
    const auto source = formatOf(from, 44100, channels, fromApart);
    const auto destination = formatOf(to, 44100, channels, toApart);
    const auto raws = samplesOf(from, frames * channels);
    Sound sound = soundOf(from, source, raws);
    sound.most = 50;
    const Converter converter(source, destination);
    ASSERT_EQ(converter.status, noErr);

    std::vector<std::vector<unsigned char>> out(toApart ? channels : 1);
    for (UInt32 done = 0; done < frames;) {
        List list(destination, 71);
        const UInt32 got = fill(converter, Sound::procedure, &sound, 71, list);
        ASSERT_GT(got, 0u);
        for (UInt32 i = 0; i < out.size(); ++i) {
            ASSERT_EQ(list[i].mDataByteSize, got * destination.mBytesPerFrame);
            out[i].insert(out[i].end(), list.bytes(i), list.bytes(i) + list[i].mDataByteSize);
        }
        done += got;
    }
    for (UInt32 frame = 0; frame < frames; ++frame)
        for (UInt32 c = 0; c < channels; ++c) {
            const std::uint64_t raw = raws[frame * channels + c];
            const std::uint64_t expected = converted(from, raw, to);
            const std::uint64_t found = rawAt(to, bytesAt(destination, to, out, frame, c));
            const bool isCopy = from.bits == to.bits && from.bytes == to.bytes && expected == raw;
            ASSERT_TRUE(isCopy ? found == expected : isSame(to, found, expected))
                << "frame " << frame << ", channel " << c << std::hex << ": " << raw << " became " << found
                << ", not " << expected;
        }
}

TEST(Formats, EveryPairIsConverted)
{
    for (std::size_t i = 0; i < kindCount; ++i)
        for (std::size_t k = 0; k < kindCount; ++k)
            for (const UInt32 channels : {1u, 2u, 3u})
                for (int apart = 0; apart < 4; ++apart) {
                    SCOPED_TRACE(std::string(kinds[i].name) + " to " + kinds[k].name + ", " +
                                 std::to_string(channels) + " channels, " + std::to_string(apart));
                    expectPair(kinds[i], apart & 1, kinds[k], apart & 2, channels);
                    if (HasFatalFailure()) return;
                }
}

TEST(Formats, UnalignedMemoryIsAccepted)
{
    for (const Kind& from : {kinds[2], kinds[13], kinds[16], kinds[17], kinds[18]})
        for (const Kind& to : {kinds[2], kinds[13], kinds[16], kinds[17], kinds[18]})
            for (int apart = 0; apart < 4; ++apart) {
                SCOPED_TRACE(std::string(from.name) + " to " + to.name);
                const auto source = formatOf(from, 44100, 2, apart & 1);
                const auto destination = formatOf(to, 44100, 2, apart & 2);
                const auto raws = samplesOf(from, 80);
                Sound sound = soundOf(from, source, raws);
                List list(destination, 41);
                for (auto& buffer : sound.buffers) buffer.insert(buffer.begin(), 0);
                for (UInt32 i = 0; i < list->mNumberBuffers; ++i)
                    list[i].mData = static_cast<unsigned char*>(list[i].mData) + 1;
                const auto procedure = [](AudioConverterRef converter, UInt32* packets, AudioBufferList* in,
                                          AudioStreamPacketDescription** none, void* context) -> OSStatus {
                    const OSStatus status = Sound::procedure(converter, packets, in, none, context);
                    for (UInt32 i = 0; i < in->mNumberBuffers; ++i)
                        in->mBuffers[i].mData = static_cast<unsigned char*>(in->mBuffers[i].mData) + 1;
                    return status;
                };
                const Converter converter(source, destination);
                ASSERT_EQ(fill(converter, procedure, &sound, 40, list), 40u);
                for (UInt32 i = 0; i < list->mNumberBuffers; ++i)
                    list.memoryOf(i).erase(list.memoryOf(i).begin());
                for (UInt32 frame = 0; frame < 40; ++frame)
                    for (UInt32 c = 0; c < 2; ++c) {
                        const UInt32 buffer = apart & 2 ? c : 0;
                        const unsigned char* bytes = list.bytes(buffer) + frame * destination.mBytesPerFrame +
                                                     (apart & 2 ? 0 : c * to.bytes);
                        ASSERT_TRUE(isSame(to, rawAt(to, bytes), converted(from, raws[frame * 2 + c], to)));
                    }
            }
}

// The reference itself is compared with literal values.
TEST(Formats, ReferenceMatchesLiteralValues)
{
    const Kind &byte = kinds[0], &word = kinds[2], &three = kinds[5], &whole = kinds[13], &single = kinds[16];
    // clang-format off
    const struct { const Kind& from; std::uint64_t raw; const Kind& to; std::uint64_t result; const char* why; } facts[] = {
        {byte,   0x80,       single, 0xBF800000, "the lowest value is -1"},
        {word,   0x4000,     single, 0x3F000000, "half of full scale"},
        {three,  0x000001,   single, 0x34000000, "1 / 2^23, exactly"},
        {single, 0x3F800000, word,   0x7FFF,     "+1 is clipped"},
        {single, 0xC0000000, word,   0x8000,     "-2 is clipped"},
        {single, 0x7FC00000, word,   0,          "NaN"},
        {word,   0x1280,     byte,   0x12,       "a tie, to the even value below"},
        {word,   0x1380,     byte,   0x14,       "a tie, to the even value above"},
        {whole,  0x7FFFFFFF, three,  0x7FFFFF,   "rounding up is clipped"},
        {whole,  0x12345678, whole,  0x12345678, "unchanged"},
        {word,   0x8001,     whole,  0x80010000, "wider"},
    };
    // clang-format on
    for (const auto& fact : facts)
        EXPECT_EQ(converted(fact.from, fact.raw, fact.to), fact.result) << fact.why;
}

TEST(Formats, AcceptedAndRefused)
{
    const auto good = interleaved(44100, 2);
    auto other = good;
    other.mFormatID = kAudioFormatULaw;
    auto frames = good;
    frames.mFramesPerPacket = 2;
    auto lopsided = good;
    lopsided.mBytesPerFrame = 7;
    auto fixed = pcm(44100, 2, 32, isSigned | isPacked | 24 << 7);
    // clang-format off
    const struct { AudioStreamBasicDescription from, to; OSStatus status; const char* why; } facts[] = {
        {good,                             good,                             noErr,                                       "the same"},
        {other,                            good,                             kAudioConverterErr_FormatNotSupported,       "not linear PCM"},
        {good,                             other,                            kAudioConverterErr_FormatNotSupported,       "not linear PCM"},
        {frames,                           good,                             kAudioConverterErr_FormatNotSupported,       "two frames a packet"},
        {good,                             lopsided,                         kAudioConverterErr_FormatNotSupported,       "seven bytes a frame"},
        {fixed,                            good,                             kAudioConverterErr_FormatNotSupported,       "fixed point"},
        {pcm(44100, 2, 40, isSigned, 5),   good,                             kAudioConverterErr_FormatNotSupported,       "40 bits"},
        {interleaved(44100, 0),            good,                             kAudioConverterErr_FormatNotSupported,       "no channels"},
        {interleaved(44100, 1024),         interleaved(44100, 1024),         noErr,                                       "many channels"},
        {interleaved(44100, 1025),         good,                             kAudioConverterErr_FormatNotSupported,       "too many channels"},
        {interleaved(0, 2),                good,                             kAudioConverterErr_InputSampleRateOutOfRange,  "no rate"},
        {good,                             interleaved(0, 2),                kAudioConverterErr_OutputSampleRateOutOfRange, "no rate"},
        {interleaved(-1, 2),               good,                             kAudioConverterErr_InputSampleRateOutOfRange,  "negative rate"},
        {interleaved(std::nan(""), 2),     good,                             kAudioConverterErr_InputSampleRateOutOfRange,  "NaN rate"},
        {good,                             interleaved(INFINITY, 2),         kAudioConverterErr_OutputSampleRateOutOfRange, "infinite rate"},
        {interleaved(1000, 2),             interleaved(256000, 2),           noErr,                                       "256 times"},
        {interleaved(1000, 2),             interleaved(257000, 2),           kAudioConverterErr_OutputSampleRateOutOfRange, "257 times"},
        {interleaved(256000, 2),           interleaved(1000, 2),             noErr,                                       "1/256"},
        {interleaved(257000, 2),           interleaved(1000, 2),             kAudioConverterErr_OutputSampleRateOutOfRange, "1/257"},
        {interleaved(44100, 128),          interleaved(48000, 128),          noErr,                                       "the most channels of the filter"},
        {interleaved(44100, 129),          interleaved(48000, 129),          kAudioConverterErr_FormatNotSupported,       "more than the filter has"},
        {interleaved(44100, 129),          interleaved(48000, 2),            noErr,                                       "two channels to filter"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        auto* converter = reinterpret_cast<AudioConverterRef>(1);
        EXPECT_EQ(AudioConverterNew(&fact.from, &fact.to, &converter), fact.status) << fact.why;
        EXPECT_EQ(converter != nullptr, fact.status == noErr) << fact.why;
        if (converter) {
            EXPECT_EQ(AudioConverterDispose(converter), noErr);
        }
    }
}

} // namespace
