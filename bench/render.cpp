// Measures a slice of 512 frames of the buffered player, compared with the simplest converters of
// libsamplerate and with scalar code for the same interpolation. All benchmarks render the same input.
#include "bench/repeat.h"
#include "bench/scalar_player.h"
#include "bench/slice_renderer.h"
#include "bench/test_signal.h"

#include <samplerate.h>

#include <string>

namespace {

constexpr std::uint32_t frames = 512;
constexpr std::uint32_t manyChannels = 8;

struct Conversion {
    float from, to;
    int channels;
    double step() const { return double{from / to}; }
};
const Conversion conversions[] = {{44100, 48000, 1}, {44100, 48000, 2}, {22050, 44100, 1}, {22050, 44100, 2}};

bool isAtEnd(double position, double step) { return position + (frames + 2) * step >= bench::signalFrames; }

void countFrames(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * frames); }

void renderSlices(benchmark::State& state, const Conversion& conversion, std::uint32_t outputChannels)
{
    bench::SliceRenderer slice(bench::testSignal(conversion.channels), conversion.channels, conversion.from,
                               conversion.to, frames, outputChannels);
    bench::repeat(state, [&] {
        slice.render();
        return slice.out.data();
    });
    countFrames(state);
}

void ours(benchmark::State& state, Conversion conversion)
{
    renderSlices(state, conversion, static_cast<std::uint32_t>(conversion.channels));
}

/// Render into a buffer with many channels: mono data to all of them, stereo data to the first two.
void intoManyChannels(benchmark::State& state, Conversion conversion)
{
    renderSlices(state, conversion, manyChannels);
}

/// Write samples with a plain loop to the same slots as intoManyChannels().
void writePlainly(const std::vector<float>& samples, int channels, std::vector<float>& out)
{
    std::size_t slots = manyChannels;
    benchmark::DoNotOptimize(slots); // the player does not know the number either when it is compiled
    if (channels == 1)
        for (std::size_t i = 0; i < frames; ++i)
            for (std::size_t c = 0; c < slots; ++c) out[i * slots + c] = samples[i];
    else
        for (std::size_t i = 0; i < frames; ++i)
            for (std::size_t c = 0; c < 2; ++c) out[i * slots + c] = samples[2 * i + c];
}

void plainLoop(benchmark::State& state, Conversion conversion)
{
    const std::vector<float>& input = bench::testSignal(conversion.channels);
    std::vector<float> out(frames * manyChannels);
    bench::repeat(state, [&] {
        writePlainly(input, conversion.channels, out);
        return out.data();
    });
    countFrames(state);
}

/// Render as ours() does, then write the samples with a plain loop.
void oursThenPlainLoop(benchmark::State& state, Conversion conversion)
{
    bench::SliceRenderer slice(bench::testSignal(conversion.channels), conversion.channels, conversion.from,
                               conversion.to, frames, static_cast<std::uint32_t>(conversion.channels));
    std::vector<float> out(frames * manyChannels);
    bench::repeat(state, [&] {
        slice.render();
        writePlainly(slice.out, conversion.channels, out);
        return out.data();
    });
    countFrames(state);
}

void scalar(benchmark::State& state, Conversion conversion)
{
    bench::ScalarPlayer player(bench::testSignal(conversion.channels));
    std::vector<float> out(2 * frames);
    const auto render = conversion.channels == 1 ? bench::renderMono : bench::renderStereo;
    bench::repeat(state, [&] {
        if (isAtEnd(player.position, conversion.step())) player.position = 0;
        render(player, conversion.step(), frames, out.data());
        return out.data();
    });
    countFrames(state);
}

void samplerate(benchmark::State& state, Conversion conversion, int converter)
{
    const std::vector<float>& input = bench::testSignal(conversion.channels);
    std::vector<float> out(2 * frames);
    int error = 0;
    SRC_STATE* const src = src_new(converter, conversion.channels, &error);
    SRC_DATA data = {};
    data.src_ratio = 1 / conversion.step();
    long at = 0;
    bench::repeat(state, [&] {
        if (isAtEnd(static_cast<double>(at), conversion.step())) at = 0;
        data.data_in = input.data() + at * conversion.channels;
        data.input_frames = static_cast<long>(frames * conversion.step()) + 8;
        data.data_out = out.data();
        data.output_frames = frames;
        src_process(src, &data);
        at += data.input_frames_used;
        return out.data();
    });
    src_delete(src);
    countFrames(state);
}

std::string name(const Conversion& conversion, const char* subject)
{
    return std::string("render/") + (conversion.channels == 1 ? "mono " : "stereo ") +
           std::to_string(static_cast<int>(conversion.from)) + " to " +
           std::to_string(static_cast<int>(conversion.to)) + "/" + subject;
}

const bool registered = [] {
    for (const Conversion& conversion : conversions) {
        benchmark::RegisterBenchmark(name(conversion, "ours").c_str(), ours, conversion);
        benchmark::RegisterBenchmark(name(conversion, "one value at a time").c_str(), scalar, conversion);
        benchmark::RegisterBenchmark(name(conversion, "libsamplerate linear").c_str(), samplerate, conversion,
                                     int{SRC_LINEAR});
        benchmark::RegisterBenchmark(name(conversion, "libsamplerate zero-order hold").c_str(), samplerate,
                                     conversion, int{SRC_ZERO_ORDER_HOLD});
        benchmark::RegisterBenchmark(name(conversion, "8 channels").c_str(), intoManyChannels, conversion);
        benchmark::RegisterBenchmark(name(conversion, "plain loop").c_str(), plainLoop, conversion);
        benchmark::RegisterBenchmark(name(conversion, "ours and plain loop").c_str(), oursThenPlainLoop,
                                     conversion);
    }
    return true;
}();

} // namespace
