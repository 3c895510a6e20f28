// A sound file as stereo samples of 16 bits.
#pragma once

#include "host/kvx/files/sound_file.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

/// To the nearest of 16 bits; 1 is 32768, and what does not fit is cut off. What is no number becomes 0.
std::int16_t toSixteenBits(float sample);

/// Reads a file from its first frame to its last. Mono is doubled; samples of 16 bits come as they are,
/// others to the nearest.
class SixteenBitReader {
public:
    /// `gain` is a factor; at exactly 1 it leaves every sample. Throws Failure.
    SixteenBitReader(const std::string& path, float gain) : file_(path), gain_(gain) {}

    /// Up to `frames` frames: out[frame * 2 + channel]. Returns how many; fewer than requested at the end
    /// only. Throws Failure when the disk cannot be read.
    std::size_t read(std::int16_t* out, std::size_t frames);

    bool isDamaged() const { return file_.isDamaged(); } ///< as SoundFile::isDamaged

private:
    SoundFile file_;
    float gain_;
    std::vector<float> decoded_;
};

} // namespace kvx
