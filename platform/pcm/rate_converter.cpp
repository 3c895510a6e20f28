#include "platform/pcm/rate_converter.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include <samplerate.h>

namespace kvxplatform::pcm {

struct RateConverter::State {
    ~State() { src_delete(converter); }

    SRC_STATE* converter = nullptr;
    double ratio = 1; ///< output frames per input frame
    UInt32 channels = 0;
    const Float32* unread = nullptr; ///< input that the resampling library has not used yet
    UInt32 unreadFrames = 0;
};

RateConverter::RateConverter() = default;
RateConverter::~RateConverter() = default;

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
    {SRC_SINC_BEST_QUALITY, 340241.0 / 2381},
};

} // namespace

bool RateConverter::takes(Float64 from, Float64 to) { return src_is_valid_ratio(to / from); }

bool RateConverter::prepare(Float64 from, Float64 to, UInt32 channels, Quality quality)
{
    const double ratio = to / from;
    if (!src_is_valid_ratio(ratio) || channels == 0) return false;
    auto next = std::make_unique<State>();
    int error = 0;
    next->converter = src_new(filters[static_cast<int>(quality)].kind, static_cast<int>(channels), &error);
    if (!next->converter) return false;
    next->ratio = ratio;
    next->channels = channels;
    state_ = std::move(next);
    return true;
}

UInt32 RateConverter::lookAhead(Float64 from, Float64 to, Quality quality)
{
    const double half = filters[static_cast<int>(quality)].halfFrames * std::max(1.0, from / to);
    // The resampling library rounds `half` and needs more than one further frame.
    return static_cast<UInt32>(half + 0.5) + 2;
}

void RateConverter::setRatio(double ratio)
{
    if (ratio == state_->ratio) return;
    state_->ratio = ratio;
    // Without this call, the resampling library would ramp to the new ratio.
    src_set_ratio(state_->converter, ratio);
}

void RateConverter::reset()
{
    src_reset(state_->converter);
    state_->unreadFrames = 0;
}

Progress RateConverter::process(const Float32* in, UInt32 frames, Float32* out, UInt32 capacity)
{
    static constexpr Float32 noInput = 0;
    Float32 noOutput = 0;
    SRC_DATA work{};
    work.data_in = in ? in : &noInput;
    work.input_frames = static_cast<long>(frames);
    work.data_out = out ? out : &noOutput;
    work.output_frames = static_cast<long>(capacity);
    work.src_ratio = state_->ratio;
    // Cannot fail, because the ratio is valid and the buffers do not overlap.
    src_process(state_->converter, &work);
    return {static_cast<UInt32>(work.input_frames_used), static_cast<UInt32>(work.output_frames_gen)};
}

void RateConverter::convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input)
{
    for (UInt32 done = 0;;) {
        const Progress progress =
            process(state_->unreadFrames ? state_->unread : nullptr, state_->unreadFrames,
                    out + std::size_t{done} * state_->channels, frames - done);
        done += progress.made;
        state_->unreadFrames -= progress.used;
        state_->unread += std::size_t{progress.used} * state_->channels;
        if (done == frames) return;
        if (state_->unreadFrames) continue;

        const double needed = (frames - done) / state_->ratio;
        state_->unreadFrames = std::clamp(static_cast<UInt32>(std::min(needed, 1e9)), UInt32{1}, largestPull);
        state_->unread = input.pull(input.context, state_->unreadFrames);
    }
}

} // namespace kvxplatform::pcm
