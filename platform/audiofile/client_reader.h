// Reads the frames of a file in the caller's client format.
//
// If the client format is native float at the file's channel count and sample rate, frames are decoded
// straight into the caller's memory. If the client format is exactly the file's format, the file's bytes are
// copied. For every other client format, frames are decoded to 32-bit float and then converted.
//
// Channels  a mono file plays on the first two client channels. Otherwise file channel n plays on client
//           channel n; surplus channels of the file are dropped, surplus channels of the client are silent.
// Rate      the first client frame after a seek has the time of the file frame that was sought. n file frames
//           up to the end of the file give ceil(n * client rate / file rate) client frames. The rate filter
//           sees silence before the seek position and after the end of the file.
// One call at a time.
// All functions: [any].
#pragma once

#include "platform/audiofile/sound_file.h"
#include "platform/pcm/pulled_conversion.h"

#include <vector>

namespace kvxplatform::audiofile {

class ClientReader {
public:
    /// `file` outlives this reader. `client` is a linear PCM format.
    ClientReader(SoundFile& file, const AudioStreamBasicDescription& client);

    /// Allocate the memory that reading needs. Call prepare() once, before any other function. Returns false
    /// if the ratio of the rates is too large, or if too many channels would need a rate conversion. Throws
    /// std::bad_alloc.
    bool prepare();

    const AudioStreamBasicDescription& client() const { return client_; }

    /// Read up to `frames` frames into a buffer list whose buffers have space for the frames.
    /// Returns  the number of frames read: fewer at the end of the file, 0 after the end; -1 if the disk
    ///          cannot be read.
    SInt64 read(UInt32 frames, AudioBufferList& list);

    /// Get the position of the next client frame, in frames of the file. Between two file frames, the earlier
    /// frame is returned.
    SInt64 tell() const;

    /// Set the read position to a frame of the file. Returns false if the frame cannot be reached. Throws
    /// std::bad_alloc, and then nothing has changed.
    bool seek(SInt64 frame);

private:
    enum class Path { bytes, floats, conversion };

    bool prepare(pcm::Conversion& conversion) const;
    SInt64 readConverted(UInt32 frames, AudioBufferList& list);
    OSStatus pull(UInt32 frames);

    SoundFile& file_;
    const AudioStreamBasicDescription client_;
    Path path_ = Path::conversion;

    // The fields below are used by Path::conversion only.
    std::vector<Float32> block_;  // decoded frames, interleaved
    UInt32 blockFrames_ = 0;      // capacity of block_, in frames
    AudioBufferList blockList_{}; // the frames of block_
    pcm::PulledInput input_;      // decoded frames in block_ that are not converted yet
    pcm::Conversion conversion_;
    SInt64 start_ = 0; // file frame at client frame 0; file frames lost to damage are added
    SInt64 made_ = 0;  // number of client frames read since start_
};

} // namespace kvxplatform::audiofile
