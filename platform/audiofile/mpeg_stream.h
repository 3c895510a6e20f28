// An MPEG layer III stream that does not say how long it is, as one that does: a first frame without sound,
// which holds the number of frames, and the file behind it. libsndfile reads it through these calls.
#pragma once

#include "platform/audiofile/mpeg_frames.h"

#include <array>

#include <sndfile.h>

namespace kvxplatform::audiofile {

class MpegStream {
public:
    /// `descriptor` stays the caller's and outlives this. `frames.first` is of layer III.
    MpegStream(int descriptor, SInt64 fileBytes, const MpegFrames& frames);

    /// From the beginning. This outlives the result.
    SNDFILE* open(SF_INFO& info);

private:
    static SF_VIRTUAL_IO calls();
    static MpegStream& of(void* user) { return *static_cast<MpegStream*>(user); }
    sf_count_t length() const { return note_ + end_ - start_; }
    sf_count_t read(void* out, sf_count_t bytes);

    const int descriptor_;
    const sf_count_t start_, end_; // of the frames in the file
    sf_count_t note_;              // bytes of the frame in front
    sf_count_t place_ = 0;         // of the whole
    std::array<UInt8, 1500> frame_{};
};

} // namespace kvxplatform::audiofile
