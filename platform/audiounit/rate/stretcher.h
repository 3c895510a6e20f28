// Rubber Band, for time alone, fed from a tape.
//
// Two settings of its finer engine: all of its windows, or a single one. What is called its faster engine
// allocates whenever its ratio changes, cannot be stretched to less than about an eighth, and costs more than
// the single window does.
#pragma once

#include "platform/audiounit/rate/voice.h"

#include <rubberband/RubberBandStretcher.h>

#include <algorithm>
#include <vector>

namespace kvxplatform::audiounit {

class Stretcher {
public:
    enum class Engine { finer, faster };

    /// Throws std::bad_alloc.
    Stretcher(Float64 sampleRate, UInt32 channels, Engine engine);

    /// Forget the past; the next frame read stands where `frame` stood.
    void start(std::int64_t frame, double ratio);
    std::int64_t leadIn(double ratio) const;

    /// Take about `most` frames of the tape. True when there are frames to read.
    bool prepare(Reader& reader, std::int64_t most);

    /// Frames out for a frame in. What has been taken from the tape already keeps its former ratio.
    void setRatio(double ratio);
    double ratio() const { return ratio_; }

    void read(Reader& reader, Float32* const* out, UInt32 frames);

    /// Where in the input the frame stands that is read next, or was read `behind` frames ago.
    double position(double behind) const;

    /// Whether frames read now were stretched at the present ratio.
    bool isSettled() const { return unsettled <= 0; }

    /// Frames, at a ratio: input that is taken before its sound is read; and what sounds on behind its end,
    /// 60 dB down (measured: windows that hold the last frame are spread further apart than they were).
    double framesAhead(double ratio) const { return pad + (delay + hop) / ratio; }
    double framesOfTail(double ratio) const { return delay * std::max(1.0, ratio + 0.5); }

private:
    void feed(Reader& reader);
    void process(UInt32 frames);
    void tame(UInt32 frames);
    UInt32 retrieve(Float32* const* out, std::int64_t most);
    void dropStart();

    RubberBand::RubberBandStretcher band;
    UInt32 pad, delay; // of the engine, in frames
    double ratio_ = 1;
    std::int64_t fed = 0;                         // the next frame to take from the tape
    std::int64_t windowEnd = 0, readSince = 0;    // of the newest window, and frames read after it was in
    std::int64_t toDrop = 0;                      // frames in front of the first one heard
    std::int64_t unsettled = 0;                   // frames to read before the present ratio is heard
    std::vector<Float32> silence, tamed, dropped; // a piece of each channel; of silence one for all
    std::vector<const Float32*> in;
    std::vector<Float32*> planes;

    static constexpr UInt32 hop = 512; // the largest step of either engine
};

} // namespace kvxplatform::audiounit
