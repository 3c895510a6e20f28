// An MPEG stream that does not say how long it is, for libsndfile. That guesses the length from the number of
// bytes and the first frame's bit rate, and reads no further than its guess; so it is told of as many bytes
// as make the guess long enough.
#pragma once

#include "platform/audiofile/mpeg_frames.h"

#include <sndfile.h>

namespace kvxplatform::audiofile {

class MpegStream {
public:
    /// `descriptor` stays the caller's and outlives this.
    MpegStream(int descriptor, SInt64 fileBytes, const MpegFrames& frames);

    /// From the beginning; null as sf_open. This outlives the result.
    SNDFILE* open(SF_INFO& info);

private:
    static SF_VIRTUAL_IO calls();
    static MpegStream& of(void* user) { return *static_cast<MpegStream*>(user); }
    sf_count_t read(void* out, sf_count_t bytes);

    const int descriptor_;
    const sf_count_t start_; // of the first frame in the file
    const sf_count_t there_; // bytes from there on
    const sf_count_t told_;
    sf_count_t place_ = 0;
};

} // namespace kvxplatform::audiofile
