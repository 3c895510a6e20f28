#include "bench/stretchers.h"

#include "bench/file_player.h"
#include "bench/test_signal.h"

#include <algorithm>

namespace bench {
namespace {

constexpr std::size_t largestInput = 1024; // frames per call; the platform's units have this limit

struct Span {
    std::size_t first, frames;
};

/// The next span of the test signal, which starts at `position`; `position` advances by the span. The last
/// span before the end of the signal may have fewer than `frames` frames; the next span starts at frame 0.
Span nextSpan(std::size_t& position, std::size_t frames)
{
    if (position == signalFrames) position = 0;
    const Span span = {position, std::min(frames, signalFrames - position)};
    position += span.frames;
    return span;
}

} // namespace

RubberBandStretcher::RubberBandStretcher(double timeRatio, double pitchScale, double framesOut)
    : band_(static_cast<std::size_t>(signalRate), 2, options, timeRatio, pitchScale), framesOut_(framesOut)
{
    band_.setMaxProcessSize(largestInput);
    for (std::vector<float>& each : out_) each.resize(static_cast<std::size_t>(framesOut) + 1);
    for (int i = 0; i < 100; ++i) step(); // discarded, because the first slices take longer
}

std::size_t RubberBandStretcher::step()
{
    owed_ += framesOut_;
    const auto frames = static_cast<std::size_t>(owed_);
    owed_ -= static_cast<double>(frames);
    for (std::size_t done = 0; done < frames;) {
        while (band_.available() <= 0) {
            const std::size_t required = std::clamp<std::size_t>(band_.getSamplesRequired(), 1, largestInput);
            const Span span = nextSpan(position_, required);
            const float* const in[] = {testSignalPlanes()[0] + span.first,
                                       testSignalPlanes()[1] + span.first};
            band_.process(in, span.frames, false);
        }
        float* const target[] = {out_[0].data() + done, out_[1].data() + done};
        done += band_.retrieve(target, std::min(frames - done, static_cast<std::size_t>(band_.available())));
    }
    return frames;
}

SoundTouchStretcher::SoundTouchStretcher(double tempo, double semitones) : out_(2 * sliceFrames)
{
    touch_.setSampleRate(static_cast<unsigned>(signalRate));
    touch_.setChannels(2);
    touch_.setTempo(tempo);
    touch_.setPitchSemiTones(semitones);
    for (int i = 0; i < 100; ++i) step();
}

const float* SoundTouchStretcher::step()
{
    for (unsigned done = 0; done < sliceFrames;) {
        done += touch_.receiveSamples(out_.data() + 2 * done, sliceFrames - done);
        if (done == sliceFrames) break;
        const Span span = nextSpan(position_, sliceFrames);
        touch_.putSamples(testSignal(2).data() + 2 * span.first, static_cast<unsigned>(span.frames));
    }
    return out_.data();
}

} // namespace bench
