// kvx_bit_exactness [FRAMES]: renders FRAMES frames with the buffered player and with the reference player of
// the tests, and compares the outputs bit by bit. Rates, start positions, buffers and slice sizes are random.
#include "player/play_queue.h"
#include "player/render.h"
#include "tests/support/reference_player.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

namespace {

constexpr std::size_t longestSlice = 1100;
constexpr int slicesPerCase = 24;

using Random = std::mt19937;

double between(Random& random, double low, double high)
{
    return std::uniform_real_distribution<double>(low, high)(random);
}

struct Rates {
    float from, to;
};

/// Choose the rates of player and device: usual rates, any rate, or a player rate from 4 Hz to 1 MHz.
Rates randomRates(Random& random)
{
    static const float usual[] = {8000, 11025, 16000, 22050, 32000, 44100, 48000, 88200, 96000, 192000};
    const auto oneOf = [&] { return usual[random() % std::size(usual)]; };
    switch (random() % 4) {
    case 0:
    case 1:
        return {oneOf(), oneOf()};
    case 2:
        return {static_cast<float>(between(random, 1000, 200000)), oneOf()};
    default:
        return {static_cast<float>(std::exp2(between(random, 2, 20))), oneOf()};
    }
}

/// Choose a start position in frames: 0, a whole frame, a multiple of the position step, or any number.
double randomPosition(Random& random, const Rates& rates)
{
    const double position = between(random, 0, 3000);
    switch (random() % 4) {
    case 0:
        return 0;
    case 1:
        return std::floor(position);
    case 2:
        return double{rates.from / rates.to} * std::floor(position);
    default:
        return position;
    }
}

std::vector<float> randomSamples(Random& random, bool isStereo)
{
    std::vector<float> samples(random() % 4 ? 2000 + random() % 30000 : 2 + random() % 500);
    // Make the count even in most stereo buffers. The other buffers may end with half a frame.
    if (isStereo && random() % 16) samples.resize(samples.size() & ~std::size_t{1});
    for (float& each : samples)
        each = static_cast<float>(static_cast<std::int32_t>(random())) / 2147483648.0f;
    return samples;
}

/// A buffered player (actual) and a reference player (expected) with the same settings and buffers.
struct PlayerPair {
    explicit PlayerPair(Random& random) : actual()
    {
        const Rates rates = randomRates(random);
        const bool isStereo = random() % 2;
        actual.sampleRate = expected.sampleRate = rates.from;
        actual.deviceSampleRate = rates.to;
        actual.numberOfChannels = expected.numberOfChannels = isStereo ? 2 : 1;
        actual.noUnderflow = expected.noUnderflow = true;
        actual.isRunning = true;
        expected.start(rates.to);
        actual.outputPosition = expected.position = randomPosition(random, rates);
        for (std::size_t i = 1 + random() % 6; i > 0; --i) {
            const std::vector<float> samples = randomSamples(random, isStereo);
            expected.waiting.push_back(samples);
            player::PlayItem item = {static_cast<std::int32_t>(samples.size()),
                                     static_cast<float*>(std::malloc(samples.size() * sizeof(float)))};
            std::memcpy(item.data, samples.data(), samples.size() * sizeof(float));
            player::AddToPlayList(actual, item, false);
        }
    }
    ~PlayerPair() { player::FreeAllPlayItems(actual); }

    /// Render one slice with the buffered player and with the scalar player. Return whether their outputs and
    /// positions are identical.
    bool renderAndCompare(std::uint32_t frames, std::uint32_t channels)
    {
        std::vector<unsigned char> bytes(std::size_t{frames} * channels * sizeof(float), 0xA5);
        reference::Slice slice = {{{channels, bytes, false}}, 1};
        AudioBufferList list;
        list.mNumberBuffers = 1;
        list.mBuffers[0] = {channels, static_cast<UInt32>(bytes.size()), bytes.data()};
        player::MyPlayIOProc(0, nullptr, nullptr, nullptr, &list, nullptr, &actual);
        expected.render(slice);
        return bytes == slice.buffers[0].bytes &&
               std::memcmp(&actual.outputPosition, &expected.position, sizeof(double)) == 0 &&
               std::memcmp(&actual.outputPositionRelative, &expected.relativePosition, sizeof(double)) == 0 &&
               actual.baseSampleIndex == expected.base;
    }

    player::AudioPlayerData actual;
    reference::Player expected;
};

} // namespace

int main(int count, char** arguments)
{
    const std::uint64_t requested = count > 1 ? std::strtoull(arguments[1], nullptr, 10) : 50000000;
    std::uint64_t frames = 0;
    unsigned cases = 0;
    for (; frames < requested; ++cases) {
        Random random(cases);
        PlayerPair pair(random);
        for (int i = 0; i < slicesPerCase; ++i) {
            const auto sliceFrames = static_cast<std::uint32_t>(1 + random() % longestSlice);
            if (!pair.renderAndCompare(sliceFrames, 1 + random() % 9)) {
                std::printf("case %u differs in slice %d of %u frames: rates %.9g to %.9g, %d channels\n",
                            cases, i, sliceFrames, static_cast<double>(pair.actual.sampleRate),
                            static_cast<double>(pair.actual.deviceSampleRate), pair.actual.numberOfChannels);
                return 1;
            }
            frames += sliceFrames;
        }
    }
    std::printf("%llu frames in %u cases with random rates and start positions: all bits are identical\n",
                static_cast<unsigned long long>(frames), cases);
}
