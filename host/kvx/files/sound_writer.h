// Writes sound files of each format in OutputFormat.
// All functions: [main].
#pragma once

#include "host/kvx/files/encoded_output.h"
#include "host/kvx/files/output_format.h"
#include "host/kvx/files/quantizer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kvx {

/// Writes a sound to a file or a stream. A file gets its name when finish() has written all of it.
class SoundWriter {
public:
    /// Begin to write. `isDithered` applies to integers; `isStopped` returns whether a signal has ended the
    /// command.
    /// Units   rate in Hz.
    /// Errors  throws Failure, for example if the format cannot hold the rate or the channels.
    SoundWriter(const std::string& path, const OutputFormat& format, int rate, int channels, bool isDithered,
                const std::function<bool()>& isStopped);
    ~SoundWriter(); ///< removes an unfinished file
    SoundWriter(const SoundWriter&) = delete;
    SoundWriter& operator=(const SoundWriter&) = delete;

    /// Append frames.
    /// Shape   samples[frame * channels + channel], full scale 1.
    /// Errors  throws Failure.
    void write(const float* samples, std::size_t frames);

    /// Write the lengths, and give the file its name.
    /// Errors  throws Failure.
    void finish();

private:
    struct Close {
        void operator()(SNDFILE* encoder) const { sf_close(encoder); }
    };
    void checkWritten(bool isGood);
    std::string prefix(std::uint64_t frames) const;

    const std::string path_;
    const OutputFormat format_;
    const int rate_;
    const std::size_t channels_;
    std::uint64_t frames_ = 0; // written so far
    const int* const order_;   // as channelOrder() returns it
    std::string temporary_;    // the path of the unfinished file; empty: a stream
    EncodedOutput output_;
    std::unique_ptr<SNDFILE, Close> encoder_; // writes to output_
    Quantizer quantizer_;
    std::vector<float> ordered_;
    std::vector<std::int32_t> integers_;
};

} // namespace kvx
