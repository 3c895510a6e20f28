// Sound files, decoded to 32-bit float. Every format that libsndfile reads.
#pragma once

#include "host/kvx/failure.h"

#include <sndfile.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kvx {

/// What a file holds, as far as its header tells.
struct SoundFormat {
    int sampleRate = 0;   ///< Hz, at least 1
    int fileChannels = 0; ///< as stored
    int channels = 0;     ///< heard: 1 or 2
    std::int64_t frames = 0;

    double duration() const { return double(frames) / sampleRate; } ///< seconds
};

/// For a file that ends before the frames that it promises.
Failure cutShort(const std::string& path);

/// One open file. Of more than two channels the first two are read. [main]
class SoundFile {
public:
    /// Throws Failure: what is wrong with the file, and what to do next.
    explicit SoundFile(const std::string& path);

    /// As the disk has it.
    const std::string& path() const { return path_; }
    const SoundFormat& format() const { return format_; }

    /// Decode up to `frames` frames: out[frame * format().channels + channel]. Returns the frames decoded;
    /// fewer than asked at the end only. Throws Failure when the file ends before the frames that its header
    /// promises.
    std::size_t read(float* out, std::size_t frames);

private:
    struct Close {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    std::string path_;
    std::unique_ptr<SNDFILE, Close> file_;
    SoundFormat format_;
    std::int64_t framesRead_ = 0;
    std::vector<float> wide_; // frames of more than two channels, on their way
};

} // namespace kvx
