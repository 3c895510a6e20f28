#include "platform/audiounit/rate_converter.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include <samplerate.h>

namespace kvxplatform::audiounit {

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

bool RateConverter::prepare(Float64 from, Float64 to, UInt32 channels, Quality quality)
{
    static constexpr int kinds[] = {SRC_SINC_MEDIUM_QUALITY, SRC_SINC_BEST_QUALITY};
    const double ratio = to / from;
    if (!src_is_valid_ratio(ratio) || channels == 0) return false;
    auto made = std::make_unique<State>();
    int error = 0;
    made->converter = src_new(kinds[static_cast<int>(quality)], static_cast<int>(channels), &error);
    if (!made->converter) return false;
    made->ratio = ratio;
    made->channels = channels;
    state = std::move(made);
    return true;
}

void RateConverter::reset()
{
    src_reset(state->converter);
    state->waitingFrames = 0;
}

void RateConverter::convert(Float32* out, UInt32 frames, UInt32 largestPull, const Input& input)
{
    static constexpr Float32 nothing = 0;
    for (UInt32 done = 0;;) {
        SRC_DATA work{};
        work.data_in = state->waitingFrames ? state->waiting : &nothing;
        work.input_frames = static_cast<long>(state->waitingFrames);
        work.data_out = out + std::size_t{done} * state->channels;
        work.output_frames = static_cast<long>(frames - done);
        work.src_ratio = state->ratio;
        src_process(state->converter,
                    &work); // cannot fail: the ratio is valid and the buffers do not overlap
        done += static_cast<UInt32>(work.output_frames_gen);
        state->waitingFrames -= static_cast<UInt32>(work.input_frames_used);
        state->waiting += std::size_t(work.input_frames_used) * state->channels;
        if (done == frames) return;
        if (state->waitingFrames) continue;

        const double needed = (frames - done) / state->ratio;
        state->waitingFrames = std::clamp(static_cast<UInt32>(std::min(needed, 1e9)), UInt32{1}, largestPull);
        state->waiting = input.pull(input.context, state->waitingFrames);
    }
}

} // namespace kvxplatform::audiounit
