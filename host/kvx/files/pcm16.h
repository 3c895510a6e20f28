// Sound files as stereo samples in PCM16 (16-bit integers).
// All functions: [main].
#pragma once

#include "host/kvx/files/sound_file.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

/// Round a sample to PCM16: full scale 1 is 32768, values out of range are clipped, NaN becomes 0.
std::int16_t toPcm16(float sample);

/// Reads a file from its first frame to its last frame. Mono is copied to both channels. Samples that the
/// file stores as PCM16 do not change.
class Pcm16Reader {
public:
    /// Open a file. `gain` is a factor; exactly 1 leaves every sample unchanged.
    /// Errors  throws Failure.
    Pcm16Reader(const std::string& path, float gain) : file_(path), gain_(gain) {}

    /// Decode up to `frames` frames.
    /// Shape    out[frame * 2 + channel].
    /// Returns  the number of decoded frames; less than `frames` only at the end of the file.
    /// Errors   throws Failure if the disk cannot be read.
    std::size_t read(std::int16_t* out, std::size_t frames);

    bool isDamaged() const { return file_.isDamaged(); } ///< the same as SoundFile::isDamaged()

private:
    SoundFile file_;
    float gain_;
    std::vector<float> decoded_;
};

} // namespace kvx
