// Time stretchers of other libraries (Rubber Band, SoundTouch), which render slices of the test signal.
#pragma once

#include <rubberband/RubberBandStretcher.h>

#include <soundtouch/SoundTouch.h>

#include <cstddef>
#include <vector>

namespace bench {

/// A Rubber Band stretcher with the settings of the platform's time-pitch unit.
class RubberBandStretcher {
public:
    /// Make a stretcher; `timeRatio` is output frames per input frame, `framesOut` the mean size of a slice.
    RubberBandStretcher(double timeRatio, double pitchScale, double framesOut);

    /// Render a slice, with one array per channel. Return the number of frames in the slice.
    std::size_t step();
    const float* left() const { return out_[0].data(); }

    static constexpr int options = RubberBand::RubberBandStretcher::OptionProcessRealTime |
                                   RubberBand::RubberBandStretcher::OptionThreadingNever |
                                   RubberBand::RubberBandStretcher::OptionEngineFiner |
                                   RubberBand::RubberBandStretcher::OptionChannelsTogether;

private:
    RubberBand::RubberBandStretcher band_;
    double framesOut_;
    double owed_ = 0; ///< rest of `framesOut`, below one frame, that the next slice adds
    std::size_t position_ = 0;
    std::vector<float> out_[2];
};

/// A SoundTouch stretcher with default settings.
class SoundTouchStretcher {
public:
    SoundTouchStretcher(double tempo, double semitones);

    /// Render a slice of `sliceFrames` stereo frames. Return the interleaved samples.
    const float* step();

private:
    soundtouch::SoundTouch touch_;
    std::size_t position_ = 0;
    std::vector<float> out_;
};

} // namespace bench
