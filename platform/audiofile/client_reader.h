// Frames of a file in the caller's format.
//
// Float samples of the file's own channels and rate are decoded straight into the caller's memory, and so are
// the bytes of a file in the caller's very format. All else goes through work buffers of a fixed size, as
// 32-bit float: channels first, then the rate, then the width.
//
// Channels  a single channel is heard in the first two; otherwise channel n is channel n, those that the
//           caller has no place for are left out, and places without a channel are silent.
//
// Rate      the first frame out stands where the frame in stood at which reading began; from there to the end
//           of the file are ceil(frames * rate out / rate in) frames. The filter knows nothing of what stands
//           in front of that place, and silence behind the end.
#pragma once

#include "platform/audiofile/sound_file.h"
#include "platform/pcm/rate_converter.h"

#include <vector>

namespace kvxplatform::audiofile {

class ClientReader {
public:
    /// `file` outlives this. `client` is linear PCM.
    ClientReader(SoundFile& file, const AudioStreamBasicDescription& client);

    /// False: the rates are too far apart, or too many channels change their rate. Once, before all else.
    /// Throws std::bad_alloc.
    bool prepare();

    const AudioStreamBasicDescription& client() const { return client_; }

    /// Read up to `frames` frames into a list that holds them, in the client format. Fewer at the end, 0
    /// behind it; -1 if the disk cannot be read.
    SInt64 read(UInt32 frames, AudioBufferList& list);

    /// The frame of the file where the next frame to be read stands; between two, the former.
    SInt64 tell() const;

    /// Read on from a frame of the file; false if it cannot be reached.
    bool seek(SInt64 frame);

private:
    enum class Way { plain, straight, byChannels, byRate };

    SInt64 readConverted(UInt32 frames, AudioBufferList& list);
    SInt64 nextFrames(UInt32 frames);
    SInt64 nextAtNewRate(UInt32 frames);
    SInt64 framesUpTo(SInt64 fileFrames) const;
    static const Float32* pull(void* self, UInt32 frames);

    SoundFile& file_;
    const AudioStreamBasicDescription client_;
    const UInt32 fileChannels_, clientChannels_, sharedChannels_;
    Way way_;
    UInt32 blockFrames_ = 0; // that the work buffers hold

    // Interleaved: the file's channels; those that both have, before and after the rate; the client's.
    std::vector<Float32> fileBlock_, sharedBlock_, ratedBlock_, clientBlock_;

    // What the rate converter has had since it began at `start_`. Frames of the file, but `made_`.
    pcm::RateConverter converter_;
    SInt64 start_ = 0, taken_ = 0, made_ = 0;
    bool isAtEnd_ = false, hasFailed_ = false;
};

} // namespace kvxplatform::audiofile
