// The result of a rendering: a sound file or stream in the requested format, and its peak.
// All functions: [main].
#pragma once

#include "host/kvx/files/output_format.h"
#include "host/kvx/files/sound_writer.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kvx {

/// The requests of the user for a result.
struct ResultOptions {
    std::string path; ///< path of the file, or standardStream
    FormatRequest request;
    OutputFormat format;       ///< the format that chooseFormat() has chosen
    bool isUndithered = false; ///< whether integers are rounded without dither
    bool isNormalized = false; ///< whether the highest peak becomes full scale
};

/// Format the highest volume with which a sound whose peak is `peak` at the volume `volume` stays within full
/// scale: three digits, rounded down.
std::string volumeAtFullScale(double volume, double peak);

/// Writes a result. A result that is to be normalised is kept in a temporary file until its peak is known.
class Result {
public:
    /// `isStopped` returns whether a signal has ended the command; a write to a stream then fails.
    /// Units   rate in Hz.
    /// Errors  throws Failure.
    Result(const ResultOptions& options, int rate, int channels, const std::function<bool()>& isStopped);

    /// Append frames.
    /// Shape   samples[frame * channels + channel], full scale 1.
    /// Errors  throws Failure.
    void write(const float* samples, std::size_t frames);

    /// Write what is still to write. The call reports the finished part, from 0 to 1, to `mayContinue`.
    /// Returns  false if mayContinue() has returned false; no file is left then.
    /// Errors   throws Failure.
    bool finish(const std::function<bool(double part)>& mayContinue);

    /// Format a line about the level: the gain of a normalised result, or a peak above full scale and the
    /// options that avoid it. `volume` is the present value of --volume.
    /// Returns  "" if there is nothing to report.
    std::string levelNote(double volume) const;

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    void store(const float* samples, std::size_t frames);
    bool writeStored(const std::function<bool(double part)>& mayContinue);
    float gain() const;

    const OutputFormat format_;
    const std::size_t channels_;
    SoundWriter writer_;
    std::unique_ptr<std::FILE, Close> store_; // the samples of a result to normalise; null: none
    std::uint64_t storedFrames_ = 0;
    float peak_ = 0;
};

} // namespace kvx
