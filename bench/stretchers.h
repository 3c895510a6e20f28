// Time stretchers of other libraries. Each renders slices of the test signal.
#pragma once

#include <rubberband/RubberBandStretcher.h>

#include <soundtouch/SoundTouch.h>

#include <cstddef>
#include <vector>

namespace bench {

/// Rubber Band with the settings of the platform's time-pitch unit.
class RubberBandStretcher {
public:
    /// `timeRatio` is output frames per input frame; `framesOut` is the average size of a slice.
    RubberBandStretcher(double timeRatio, double pitchScale, double framesOut);

    /// Render a slice, not interleaved. Returns its number of frames.
    std::size_t step();
    const float* left() const { return out_[0].data(); }

    static constexpr int options = RubberBand::RubberBandStretcher::OptionProcessRealTime |
                                   RubberBand::RubberBandStretcher::OptionThreadingNever |
                                   RubberBand::RubberBandStretcher::OptionEngineFiner |
                                   RubberBand::RubberBandStretcher::OptionChannelsTogether;

private:
    RubberBand::RubberBandStretcher band_;
    double framesOut_;
    double owed_ = 0; ///< fraction of a frame that the next slice renders
    std::size_t position_ = 0;
    std::vector<float> out_[2];
};

/// SoundTouch with its default settings.
class SoundTouchStretcher {
public:
    SoundTouchStretcher(double tempo, double semitones);

    /// Render a slice of `sliceFrames` interleaved frames.
    const float* step();

private:
    soundtouch::SoundTouch touch_;
    std::size_t position_ = 0;
    std::vector<float> out_;
};

} // namespace bench
