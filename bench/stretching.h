// Other people's time stretchers and pitch shifters, fed with the same music, slice after slice.
#pragma once

#include <rubberband/RubberBandStretcher.h>

#include <soundtouch/SoundTouch.h>

#include <cstddef>
#include <vector>

namespace bench {

/// Rubber Band, with the settings that the time-pitch units choose for the file player.
class RubberBandAlone {
public:
    /// `timeRatio`: frames out for a frame in. It makes `framesOut` frames a slice.
    RubberBandAlone(double timeRatio, double pitchScale, double framesOut);

    /// The two channels of the slice, apart. Returns its frames.
    std::size_t step();
    const float* left() const { return out[0].data(); }

    static constexpr int options = RubberBand::RubberBandStretcher::OptionProcessRealTime |
                                   RubberBand::RubberBandStretcher::OptionThreadingNever |
                                   RubberBand::RubberBandStretcher::OptionEngineFiner |
                                   RubberBand::RubberBandStretcher::OptionChannelsTogether;

private:
    RubberBand::RubberBandStretcher band;
    double framesOut, owed = 0;
    std::size_t at = 0;
    std::vector<float> out[2];
};

/// SoundTouch, as it comes.
class SoundTouchAlone {
public:
    SoundTouchAlone(double tempo, double semitones);

    /// Interleaved, `sliceFrames` frames.
    const float* step();

private:
    soundtouch::SoundTouch touch;
    std::size_t at = 0;
    std::vector<float> out;
};

} // namespace bench
