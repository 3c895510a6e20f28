#include "platform/pcm/fixed_rate_converter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include <soxr.h>

namespace kvxplatform::pcm {
namespace {

constexpr UInt32 mostConvertedChannels = 128;
constexpr double mostRatio = 256;

// The resampling library's buffers grow no more after a block that fills each of them with this many frames.
constexpr double framesOfLargestBlock = 16384;

// Largest block at extreme ratios, in frames of the higher rate, because the library takes quadratic time for
// a block. There, only the measured frames fill the buffers.
constexpr double largestBlock = 65536;

// Number of frames, at the lower rate, during which the lag of the output is measured.
constexpr double measuredFrames = 16384;

// Longest periods of the two rates that the first input frame of a new converter, and of a converter after
// reset(), is aligned to. A reset on a render thread has less time.
constexpr UInt32 longestPeriod = 1 << 17, longestPeriodOfReset = 2048;

soxr_quality_spec_t recipe(FixedRateConverter::Quality quality)
{
    return soxr_quality_spec(quality == FixedRateConverter::Quality::veryHigh ? SOXR_VHQ : SOXR_HQ,
                             SOXR_HI_PREC_CLOCK);
}

/// Settings for short transforms: a longer lead would save little time.
soxr_runtime_spec_t shortTransforms()
{
    soxr_runtime_spec_t spec = soxr_runtime_spec(1);
    spec.log2_min_dft_size = spec.log2_large_dft_size = 8;
    return spec;
}

/// Returns  a number of input frames, at most `most`, that last a whole number of output frames, or nearly
/// so.
UInt32 periodOf(Float64 from, Float64 to, UInt32 most)
{
    constexpr double roundingError = 1e-9;
    const double step = std::fmod(to / from, 1);
    UInt32 best = 1;
    double fraction = 0, leastError = 1;
    for (UInt32 frames = 1; frames <= most && leastError > roundingError; ++frames) {
        fraction += step;
        if (fraction >= 1) fraction -= 1;
        const double error = std::min(fraction, 1 - fraction);
        if (error >= leastError) continue;
        leastError = error;
        best = frames;
    }
    return best;
}

/// Round a number of frames up. The C library's function is slow on this target.
std::uint64_t roundUp(double frames)
{
    const auto whole = static_cast<std::uint64_t>(frames);
    return static_cast<double>(whole) < frames ? whole + 1 : whole;
}

void silenceInfinities(Float32* samples, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = std::fabs(samples[i]) <= std::numeric_limits<Float32>::max() ? samples[i] : 0;
}

} // namespace

void FixedRateConverter::FreeResampler::operator()(soxr* resampler) const { soxr_delete(resampler); }

bool FixedRateConverter::accepts(Float64 from, Float64 to)
{
    return from <= to * mostRatio && to <= from * mostRatio;
}

bool FixedRateConverter::prepare(Float64 from, Float64 to, UInt32 channels, Quality quality)
{
    if (!accepts(from, to) || channels == 0 || channels > mostConvertedChannels) return false;
    FixedRateConverter next;
    const soxr_quality_spec_t spec = recipe(quality);
    const soxr_runtime_spec_t runtime = shortTransforms();
    next.resampler_.reset(soxr_create(from, to, channels, nullptr, nullptr, &spec, &runtime));
    if (!next.resampler_) throw std::bad_alloc(); // the arguments are valid
    next.from_ = from;
    next.to_ = to;
    next.channels_ = channels;
    next.period_ = periodOf(from, to, longestPeriodOfReset);
    next.block_.assign(std::size_t{blockFrames_} * channels, 0);
    next.settle();
    next.startAgain(periodOf(from, to, longestPeriod));
    *this = std::move(next);
    return true;
}

/// Convert silence until the resampling library allocates no more, and find out how far its output lags.
void FixedRateConverter::settle()
{
    const double ratio = to_ / from_;
    const double inputPerFrame = std::max(1.0, 1 / ratio); // input frames per frame of the lower rate
    const auto most = static_cast<UInt32>(
        std::min(framesOfLargestBlock * inputPerFrame, largestBlock / std::max(1.0, ratio)));
    const auto capacity = static_cast<UInt32>(std::max(most, 2 * blockFrames_) * std::max(1.0, ratio)) + 1;
    std::vector<Float32> discarded(std::size_t{capacity} * channels_);
    const std::vector<Float32> silence(std::size_t{most} * channels_);
    fed_ = most;
    made_ = process(silence.data(), most, discarded.data(), capacity);
    double lag = 0;
    const auto blocks = static_cast<UInt32>(measuredFrames * inputPerFrame / blockFrames_);
    for (UInt32 i = 0; i < blocks; ++i) {
        fed_ += blockFrames_;
        // The lag is greatest when one frame is missing to complete the block.
        lag = std::max(lag, static_cast<double>(fed_ - 1) - static_cast<double>(made_) / ratio);
        const UInt32 burst = process(silence.data(), blockFrames_, discarded.data(), capacity);
        made_ += burst;
        largestBurst_ = std::max(largestBurst_, burst);
    }
    lead_ = static_cast<UInt32>(std::ceil(lag)) + 1;
    const double reserve = std::ceil(lead_ * ratio) + std::ceil(blockFrames_ * ratio) + 2;
    output_.assign((static_cast<std::size_t>(reserve) + largestBurst_) * channels_, 0);
}

void FixedRateConverter::reset()
{
    if (fed_ > firstInput_) startAgain(period_);
}

/// Replace the contents of the filter by silence that ends at a multiple of `period` input frames.
void FixedRateConverter::startAgain(UInt32 period)
{
    firstInput_ = (fed_ + lead_ + period - 1) / period * period;
    firstOutput_ = static_cast<std::uint64_t>(std::llround(static_cast<double>(firstInput_) * to_ / from_));
    while (fed_ < firstInput_) {
        outputBegin_ = outputEnd_ = 0;
        feedSilence(firstInput_ - fed_);
    }
    framesIn_ = framesOut_ = 0;
}

UInt32 FixedRateConverter::framesFor(UInt32 frames) const
{
    const std::uint64_t end = roundUp((static_cast<double>(framesOut_) + frames) * from_ / to_) + lead_;
    if (end > framesIn_)
        return static_cast<UInt32>(
            std::min<std::uint64_t>(end - framesIn_, std::numeric_limits<SInt32>::max()));
    // The lead is sufficient, unless the output lags further than it did during the measurement, which is
    // shorter than the common period of some rates. The rest of the block makes output then.
    return frames > reserve() ? blockFrames_ - blockFill_ : 0;
}

FixedRateConverter::Span FixedRateConverter::freeInput()
{
    const bool isFull = (reserve() + std::size_t{largestBurst_}) * channels_ > output_.size();
    return {block_.data() + std::size_t{blockFill_} * channels_, isFull ? 0 : blockFrames_ - blockFill_};
}

void FixedRateConverter::addInput(UInt32 frames)
{
    silenceInfinities(block_.data() + std::size_t{blockFill_} * channels_, std::size_t{frames} * channels_);
    framesIn_ += frames;
    extendBlock(frames);
}

void FixedRateConverter::addSilence() { feedSilence(blockFrames_); }

/// Add up to `most` frames of silence to the block.
void FixedRateConverter::feedSilence(std::uint64_t most)
{
    const auto frames = static_cast<UInt32>(std::min<std::uint64_t>(most, blockFrames_ - blockFill_));
    std::fill_n(block_.begin() + static_cast<std::ptrdiff_t>(std::size_t{blockFill_} * channels_),
                std::size_t{frames} * channels_, 0.0f);
    extendBlock(frames);
}

void FixedRateConverter::extendBlock(UInt32 frames)
{
    fed_ += frames;
    blockFill_ += frames;
    if (blockFill_ == blockFrames_) convertBlock();
}

void FixedRateConverter::convertBlock()
{
    const auto at = [&](UInt32 frame) { return output_.data() + std::size_t{frame} * channels_; };
    std::copy(at(outputBegin_), at(outputEnd_), at(0));
    outputEnd_ = reserve();
    outputBegin_ = 0;
    blockFill_ = 0;
    const auto capacity = static_cast<UInt32>(output_.size() / channels_) - outputEnd_;
    const UInt32 burst = process(block_.data(), blockFrames_, at(outputEnd_), capacity);
    // Output of input before the last reset is discarded; there is no other output in reserve then.
    if (made_ < firstOutput_)
        outputBegin_ = static_cast<UInt32>(std::min<std::uint64_t>(burst, firstOutput_ - made_));
    outputEnd_ += burst;
    made_ += burst;
}

UInt32 FixedRateConverter::process(const Float32* in, UInt32 frames, Float32* out, UInt32 capacity)
{
    std::size_t made = 0;
    // Cannot fail, because the resampler was made from valid arguments and has all of its memory. Without a
    // variable for the number of frames used, it uses all of them.
    soxr_process(resampler_.get(), in, frames, nullptr, out, capacity, &made);
    return static_cast<UInt32>(made);
}

FixedRateConverter::Span FixedRateConverter::output()
{
    return {output_.data() + std::size_t{outputBegin_} * channels_, reserve()};
}

void FixedRateConverter::removeOutput(UInt32 frames)
{
    outputBegin_ += frames;
    framesOut_ += frames;
}

std::uint64_t FixedRateConverter::framesLeft() const
{
    // A product of whole numbers, divided once, is exact below 2^53.
    return roundUp(static_cast<double>(framesIn_) * to_ / from_) - framesOut_;
}

} // namespace kvxplatform::pcm
