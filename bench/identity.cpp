// Whether the buffered player renders, bit for bit, what one written a second time renders: any steps, start
// positions, lengths and seams, over as many frames as the first argument says.
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
constexpr int slicesOfACase = 24;

using Random = std::mt19937;

double between(Random& random, double low, double high)
{
    return std::uniform_real_distribution<double>(low, high)(random);
}

struct Rates {
    float from, to;
};

/// Those of devices and files, any others, and such as make short steps or long ones.
Rates someRates(Random& random)
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

/// Where it begins: as a start leaves it, on a place that sums reach exactly, or anywhere.
double somePosition(Random& random, const Rates& rates)
{
    const double anywhere = between(random, 0, 3000);
    switch (random() % 4) {
    case 0:
        return 0;
    case 1:
        return std::floor(anywhere);
    case 2:
        return double{rates.from / rates.to} * std::floor(anywhere);
    default:
        return anywhere;
    }
}

std::vector<float> someSamples(Random& random, bool isStereo)
{
    std::vector<float> samples(random() % 4 ? 2000 + random() % 30000 : 2 + random() % 500);
    if (isStereo && random() % 16) samples.resize(samples.size() & ~std::size_t{1}); // odd ones, at times
    for (float& each : samples)
        each = static_cast<float>(static_cast<std::int32_t>(random())) / 2147483648.0f;
    return samples;
}

/// A player and its second writing, with the same to play.
struct Pair {
    explicit Pair(Random& random) : real()
    {
        const Rates rates = someRates(random);
        const bool isStereo = random() % 2;
        real.sampleRate = second.sampleRate = rates.from;
        real.deviceSampleRate = rates.to;
        real.numberOfChannels = second.numberOfChannels = isStereo ? 2 : 1;
        real.noUnderflow = second.noUnderflow = true;
        real.isRunning = true;
        second.start(rates.to);
        real.outputPosition = second.position = somePosition(random, rates);
        for (std::size_t i = 1 + random() % 6; i > 0; --i) {
            const std::vector<float> samples = someSamples(random, isStereo);
            second.waiting.push_back(samples);
            player::PlayItem item = {static_cast<std::int32_t>(samples.size()),
                                     static_cast<float*>(std::malloc(samples.size() * sizeof(float)))};
            std::memcpy(item.data, samples.data(), samples.size() * sizeof(float));
            player::AddToPlayList(real, item, false);
        }
    }
    ~Pair() { player::FreeAllPlayItems(real); }

    /// One slice of both; whether they are the same.
    bool agree(std::uint32_t frames, std::uint32_t channels)
    {
        std::vector<unsigned char> bytes(std::size_t{frames} * channels * sizeof(float), 0xA5);
        reference::Slice slice = {{{channels, bytes, false}}, 1};
        AudioBufferList list;
        list.mNumberBuffers = 1;
        list.mBuffers[0] = {channels, static_cast<UInt32>(bytes.size()), bytes.data()};
        player::MyPlayIOProc(0, nullptr, nullptr, nullptr, &list, nullptr, &real);
        second.render(slice);
        return bytes == slice.buffers[0].bytes &&
               std::memcmp(&real.outputPosition, &second.position, sizeof(double)) == 0 &&
               std::memcmp(&real.outputPositionRelative, &second.relativePosition, sizeof(double)) == 0 &&
               real.baseSampleIndex == second.base;
    }

    player::AudioPlayerData real;
    reference::Player second;
};

} // namespace

int main(int count, char** arguments)
{
    const std::uint64_t wanted = count > 1 ? std::strtoull(arguments[1], nullptr, 10) : 50000000;
    std::uint64_t frames = 0;
    unsigned cases = 0;
    for (; frames < wanted; ++cases) {
        Random random(cases);
        Pair pair(random);
        for (int i = 0; i < slicesOfACase; ++i) {
            const auto now = static_cast<std::uint32_t>(1 + random() % longestSlice);
            if (!pair.agree(now, 1 + random() % 3)) {
                std::printf("case %u differs in slice %d of %u frames: rates %.9g to %.9g, %d channels\n",
                            cases, i, now, static_cast<double>(pair.real.sampleRate),
                            static_cast<double>(pair.real.deviceSampleRate), pair.real.numberOfChannels);
                return 1;
            }
            frames += now;
        }
    }
    std::printf("%llu frames in %u cases of random steps and start positions: identical to the last bit\n",
                static_cast<unsigned long long>(frames), cases);
}
