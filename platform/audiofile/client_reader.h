// Frames of a file in the caller's client format.
//
// Native float at the file's channels and rate is decoded into the caller's memory, and so are the bytes of a
// file in exactly the client format. Every other format is decoded to 32-bit float and converted.
//
// Channels  a single channel plays on the first two; otherwise channel n is channel n. Extra channels of the
//           file are dropped, extra channels of the client are silent.
// Rate      the first frame after a seek is the file's frame; ceil(frames * client rate / file rate) frames
//           follow up to the end. The filter sees silence before the seek position and after the end.
// One call at a time.
// All functions: [any].
#pragma once

#include "platform/audiofile/sound_file.h"
#include "platform/pcm/pulled_conversion.h"

#include <vector>

namespace kvxplatform::audiofile {

class ClientReader {
public:
    /// `file` outlives this reader. `client` is linear PCM.
    ClientReader(SoundFile& file, const AudioStreamBasicDescription& client);

    /// Allocate what reading needs: call it once, first. False if the rates are too far apart, or too many
    /// channels change their rate. Throws std::bad_alloc.
    bool prepare();

    const AudioStreamBasicDescription& client() const { return client_; }

    /// Read up to `frames` frames into a list with space for them.
    /// Returns  fewer frames at the end of the file, 0 after it, -1 if the disk cannot be read.
    SInt64 read(UInt32 frames, AudioBufferList& list);

    /// The file's frame at the position of the next client frame; the earlier one of two.
    SInt64 tell() const;

    /// Continue at a frame of the file. False if the frame cannot be reached.
    bool seek(SInt64 frame);

private:
    enum class Path { bytes, floats, conversion };

    SInt64 readConverted(UInt32 frames, AudioBufferList& list);
    OSStatus pull(UInt32 frames);

    SoundFile& file_;
    const AudioStreamBasicDescription client_;
    Path path_ = Path::conversion;

    // Of Path::conversion only.
    std::vector<Float32> block_; // decoded frames, interleaved
    UInt32 blockFrames_ = 0;     // its capacity
    pcm::PulledInput input_;     // the block's unconverted frames
    pcm::Conversion conversion_;
    SInt64 start_ = 0; // the file's frame of client frame 0; frames lost to damage move it on
    SInt64 made_ = 0;  // client frames since then
};

} // namespace kvxplatform::audiofile
