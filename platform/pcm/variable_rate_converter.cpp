#include "platform/pcm/variable_rate_converter.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include <samplerate.h>

namespace kvxplatform::pcm {

struct VariableRateConverter::State {
    ~State() { src_delete(converter); }

    /// Convert until all unread input is used or the output is full.
    /// Returns  the number of frames made.
    UInt32 process(Float32* out, UInt32 capacity);

    SRC_STATE* converter = nullptr;
    double ratio = 1; ///< output frames per input frame
    UInt32 channels = 0;
    const Float32* unread = nullptr; ///< input that the resampling library has not used yet
    UInt32 unreadFrames = 0;
};

VariableRateConverter::VariableRateConverter() = default;
VariableRateConverter::~VariableRateConverter() = default;

namespace {

/// A filter of the resampling library.
struct Filter {
    int kind;
    double halfFrames; ///< half the filter's length, in frames of the lower of the two rates
};

// One filter for each value of Quality, in the same order.
constexpr Filter filters[] = {
    {SRC_SINC_FASTEST, 2466.0 / 128},
    {SRC_SINC_MEDIUM_QUALITY, 22440.0 / 491},
};

} // namespace

bool VariableRateConverter::prepare(UInt32 channels, Quality quality)
{
    if (channels == 0) return false;
    auto next = std::make_unique<State>();
    int error = 0;
    next->converter = src_new(filters[static_cast<int>(quality)].kind, static_cast<int>(channels), &error);
    if (!next->converter) return false;
    next->channels = channels;
    state_ = std::move(next);
    return true;
}

UInt32 VariableRateConverter::lookAhead(double ratio, Quality quality)
{
    const double half = filters[static_cast<int>(quality)].halfFrames * std::max(1.0, 1 / ratio);
    // The resampling library rounds `half` and needs more than one further frame.
    return static_cast<UInt32>(half + 0.5) + 2;
}

void VariableRateConverter::setRatio(double ratio)
{
    if (ratio == state_->ratio) return;
    state_->ratio = ratio;
    // Without this call, the resampling library would ramp to the new ratio.
    src_set_ratio(state_->converter, ratio);
}

void VariableRateConverter::reset()
{
    src_reset(state_->converter);
    state_->unreadFrames = 0;
}

UInt32 VariableRateConverter::State::process(Float32* out, UInt32 capacity)
{
    static constexpr Float32 noInput = 0;
    SRC_DATA work{};
    work.data_in = unreadFrames ? unread : &noInput;
    work.input_frames = static_cast<long>(unreadFrames);
    work.data_out = out;
    work.output_frames = static_cast<long>(capacity);
    work.src_ratio = ratio;
    // Cannot fail, because the ratio is valid and the buffers do not overlap.
    src_process(converter, &work);
    const auto used = static_cast<UInt32>(work.input_frames_used);
    unreadFrames -= used;
    unread += std::size_t{used} * channels;
    return static_cast<UInt32>(work.output_frames_gen);
}

void VariableRateConverter::convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input)
{
    for (UInt32 done = 0;;) {
        done += state_->process(out + std::size_t{done} * state_->channels, frames - done);
        if (done == frames) return;
        if (state_->unreadFrames) continue;

        const double needed = (frames - done) / state_->ratio;
        state_->unreadFrames = std::clamp(static_cast<UInt32>(std::min(needed, 1e9)), UInt32{1}, largestPull);
        state_->unread = input.pull(input.context, state_->unreadFrames);
    }
}

} // namespace kvxplatform::pcm
