// Rendering, compared with a slow, plain implementation that copies one byte at a time and uses 64-bit
// positions.
#include "tests/auplayer/rendered_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace {

using test::Bits;
using test::noise;
using test::RenderedFile;
using test::Slice;

struct Reference {
    const Bits& samples;
    std::uint32_t channels;
    std::uint32_t position = 0, lastOffset = 0;
    double in = -1, out = -1;
    bool isLooping = false;

    std::uint64_t frames() const { return samples.size() / channels; }

    static std::uint32_t wrapped(double frame)
    {
        // In these tests only a frame of not-a-number fails this comparison.
        if (!(std::fabs(frame) < 9e18)) return 0;
        double low = std::fmod(std::trunc(frame), 4294967296.0);
        if (low < 0) low += 4294967296.0;
        return static_cast<std::uint32_t>(low);
    }

    /// Return the content of the buffers after the slice. Before the slice every byte was Slice::before.
    std::vector<std::vector<unsigned char>> render(std::uint32_t slice,
                                                   const std::vector<std::uint32_t>& sizes)
    {
        const std::uint64_t first = std::uint64_t{position} * channels * 4;
        const std::uint64_t inFile = samples.size() * 4;
        const auto* const file = reinterpret_cast<const unsigned char*>(samples.data());

        std::vector<std::vector<unsigned char>> buffers;
        bool isShort = position + std::uint64_t{slice} > frames();
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            std::vector<unsigned char> bytes;
            for (std::uint64_t at = 0; at < sizes[i]; ++at) {
                if (i > 0)
                    bytes.push_back(isShort ? 0 : Slice::before);
                else if (first + at < inFile)
                    bytes.push_back(file[static_cast<std::size_t>(first + at)]);
                else
                    bytes.push_back(0);
            }
            if (i == 0) isShort = isShort || (sizes[0] > 0 && first + sizes[0] > inFile);
            buffers.push_back(std::move(bytes));
        }

        lastOffset = static_cast<std::uint32_t>(std::uint64_t{position} * channels);
        position =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(std::uint64_t{position} + slice, frames()));
        if (isLooping) {
            if (in > position) position = wrapped(in);
            if (position >= out) position = wrapped(in);
        }
        return buffers;
    }
};

TEST(RenderReference, AgreesIn100000Slices)
{
    std::mt19937 random(20090401);
    const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };

    int slices = 0, loops = 0, ends = 0, straddles = 0;
    while (slices < 100000) {
        const std::uint32_t channels = 1 + below(3);
        const Bits samples = noise(below(400), channels);
        RenderedFile file(samples, channels);
        Reference reference{samples, channels};
        const std::uint32_t frames = file.frames();

        for (int i = 0; i < 500; ++i, ++slices) {
            // Between slices the host program sometimes changes the position and the loop.
            if (below(20) == 0)
                file->position = reference.position = below(4) ? below(frames + 10) : random();
            if (below(20) == 0) file->isLooping = reference.isLooping = below(3) != 0;
            if (below(20) == 0) file->loopIn = reference.in = below(frames + 10) - below(2) * 0.25;
            if (below(20) == 0)
                file->loopOut = reference.out = below(8) ? reference.in + below(200) : below(frames + 10);
            if (below(400) == 0) file->loopIn = reference.in = NAN;

            const std::uint32_t slice = below(8) ? below(64) : below(600);
            std::vector<std::uint32_t> sizes = {4 * channels * slice};
            if (below(10) == 0) sizes[0] = below(3000);
            while (below(4) == 0) sizes.push_back(below(100));
            std::vector<Slice::BufferLayout> layouts;
            for (const std::uint32_t size : sizes) layouts.push_back({channels, size});

            straddles += reference.position < frames && reference.position + slice > frames;
            const std::uint32_t before = reference.position;
            const std::vector<std::vector<unsigned char>> expected = reference.render(slice, sizes);
            Slice rendered(layouts);
            file.render(rendered, slice);
            for (std::size_t b = 0; b < sizes.size(); ++b) ASSERT_EQ(rendered.bytes(b), expected[b]) << b;
            ASSERT_EQ(file->position, reference.position);
            ASSERT_EQ(file->lastRenderOffset, reference.lastOffset);
            loops += reference.position < before;
            ends += reference.position == frames;
        }
    }
    EXPECT_GT(loops, 5000) << "the scenarios cover loops, ends and straddling slices";
    EXPECT_GT(ends, 5000);
    EXPECT_GT(straddles, 1000);
}

} // namespace
