#include "platform/pcm/rate_converter.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include <samplerate.h>

namespace kvxplatform::pcm {

struct RateConverter::State {
    ~State() { src_delete(converter); }

    SRC_STATE* converter = nullptr;
    double ratio = 1; // frames out for a frame in
    UInt32 channels = 0;
    const Float32* waiting = nullptr; // input that the converter has not taken yet
    UInt32 waitingFrames = 0;
};

RateConverter::RateConverter() = default;
RateConverter::~RateConverter() = default;

namespace {

/// A filter of the library: how it is called, and half its length at the lower of the two rates.
struct Filter {
    int kind;
    double halfFrames;
};

// In the order of the qualities.
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
    auto made = std::make_unique<State>();
    int error = 0;
    made->converter = src_new(filters[static_cast<int>(quality)].kind, static_cast<int>(channels), &error);
    if (!made->converter) return false;
    made->ratio = ratio;
    made->channels = channels;
    state = std::move(made);
    return true;
}

UInt32 RateConverter::lookAhead(Float64 from, Float64 to, Quality quality)
{
    const double half = filters[static_cast<int>(quality)].halfFrames * std::max(1.0, from / to);
    return static_cast<UInt32>(half + 0.5) + 2; // the library rounds, then wants more than that and one
}

void RateConverter::setRatio(double ratio)
{
    if (ratio == state->ratio) return;
    state->ratio = ratio;
    src_set_ratio(state->converter, ratio); // else it would take a whole stretch of frames to get there
}

void RateConverter::reset()
{
    src_reset(state->converter);
    state->waitingFrames = 0;
}

RateConverter::Piece RateConverter::process(const Float32* in, UInt32 frames, Float32* out, UInt32 room)
{
    static constexpr Float32 nothing = 0;
    Float32 nowhere = 0;
    SRC_DATA work{};
    work.data_in = in ? in : &nothing;
    work.input_frames = static_cast<long>(frames);
    work.data_out = out ? out : &nowhere;
    work.output_frames = static_cast<long>(room);
    work.src_ratio = state->ratio;
    src_process(state->converter, &work); // cannot fail: the ratio is valid and the buffers do not overlap
    return {static_cast<UInt32>(work.input_frames_used), static_cast<UInt32>(work.output_frames_gen)};
}

void RateConverter::convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input)
{
    for (UInt32 done = 0;;) {
        const Piece piece = process(state->waitingFrames ? state->waiting : nullptr, state->waitingFrames,
                                    out + std::size_t{done} * state->channels, frames - done);
        done += piece.made;
        state->waitingFrames -= piece.used;
        state->waiting += std::size_t{piece.used} * state->channels;
        if (done == frames) return;
        if (state->waitingFrames) continue;

        const double needed = (frames - done) / state->ratio;
        state->waitingFrames = std::clamp(static_cast<UInt32>(std::min(needed, 1e9)), UInt32{1}, largestPull);
        state->waiting = input.pull(input.context, state->waitingFrames);
    }
}

} // namespace kvxplatform::pcm
