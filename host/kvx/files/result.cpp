#include "host/kvx/files/result.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/text/failure.h"

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <unistd.h>

namespace kvx {
namespace {

constexpr const char* storedName = "the sound to normalize";

/// Create a file without a name in the temporary folder.
std::FILE* createStore()
{
    std::string name = temporaryFolder() + "/kvx-XXXXXX";
    const int file = mkstemp(name.data());
    if (file < 0) throw cannotKeep(storedName, errno);
    unlink(name.c_str());
    std::FILE* const stream = fdopen(file, "w+b");
    if (!stream) throw cannotKeep(storedName, errno);
    return stream;
}

/// The largest magnitude of the samples. A NaN does not count.
float peakOf(const float* samples, std::size_t count)
{
    // Separate peaks become SIMD lanes.
    constexpr std::size_t lanes = 8;
    float peaks[lanes] = {};
    const auto add = [&](std::size_t lane, float sample) {
        const float magnitude = std::fabs(sample);
        peaks[lane] = magnitude > peaks[lane] ? magnitude : peaks[lane];
    };
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane) add(lane, samples[i + lane]);
    for (; i < count; ++i) add(0, samples[i]);
    return *std::max_element(std::begin(peaks), std::end(peaks));
}

double decibelsOf(double factor) { return 20 * std::log10(factor); }

} // namespace

Result::Result(const ResultOptions& options, int rate, int channels, const std::function<bool()>& isStopped)
    : format_(options.format), channels_(static_cast<std::size_t>(channels)),
      writer_(options.path, options.format, rate, channels, !options.isUndithered, isStopped),
      store_(options.isNormalized ? createStore() : nullptr)
{
}

void Result::write(const float* samples, std::size_t frames)
{
    peak_ = std::max(peak_, peakOf(samples, frames * channels_));
    store_ ? store(samples, frames) : writer_.write(samples, frames);
}

void Result::store(const float* samples, std::size_t frames)
{
    if (std::fwrite(samples, sizeof(float) * channels_, frames, store_.get()) != frames)
        throw cannotKeep(storedName, errno);
    storedFrames_ += frames;
}

/// The factor that makes the peak the highest sample of the format. Silence stays silence.
float Result::gain() const
{
    const double highest = format_.bits > 0 ? 1 - std::ldexp(1.0, 1 - format_.bits) : 1;
    return peak_ > 0 && std::isfinite(peak_) ? static_cast<float>(highest / double{peak_}) : 1.0f;
}

bool Result::writeStored(const std::function<bool(double part)>& mayContinue)
{
    constexpr std::size_t blockFrames = 8192;
    std::vector<float> block(blockFrames * channels_);
    const float factor = gain();
    if (std::fflush(store_.get()) != 0) throw cannotKeep(storedName, errno);
    std::rewind(store_.get());
    for (std::uint64_t done = 0; done < storedFrames_;) {
        if (!mayContinue(static_cast<double>(done) / static_cast<double>(storedFrames_))) return false;
        const std::size_t frames =
            std::fread(block.data(), sizeof(float) * channels_, blockFrames, store_.get());
        if (frames == 0) throw cannotKeep(storedName, EIO);
        std::transform(block.begin(), block.end(), block.begin(),
                       [factor](float each) { return each * factor; });
        writer_.write(block.data(), frames);
        done += frames;
    }
    return true;
}

bool Result::finish(const std::function<bool(double part)>& mayContinue)
{
    if (store_ && !writeStored(mayContinue)) return false;
    writer_.finish();
    return true;
}

std::string volumeAtFullScale(double volume, double peak)
{
    const double highest = volume / peak;
    const double unit = std::pow(10.0, std::floor(std::log10(highest)) - 2);
    return fmt::format("{:.3g}", std::floor(highest / unit) * unit);
}

std::string Result::levelNote(double volume) const
{
    if (!std::isfinite(peak_)) return "The sound has infinite samples, which no gain avoids.";
    if (store_)
        return gain() == 1 ? ""
                           : fmt::format("Normalized by {:+.1f} dB (a factor of {:.3f}).",
                                         decibelsOf(double{gain()}), gain());
    if (peak_ <= 1) return "";
    const char* const effect = format_.bits > 0   ? "and clipped"
                               : isExact(format_) ? "which 32-bit float keeps and players clip"
                                                  : "which players clip";
    return fmt::format("The peak is {:+.1f} dB, {:.3f} times full scale, {}: `--volume {}` or "
                       "`--normalize` avoids this.",
                       decibelsOf(double{peak_}), peak_, effect, volumeAtFullScale(volume, peak_));
}

} // namespace kvx
