// A recording of a device's output, which a background thread writes to a WAV file of 32-bit float samples.
#pragma once

#include "platform/hal/float_wave.h"
#include "platform/hal/signal.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kvxplatform::hal {

/// A capture. The file has a temporary name until the capture is finished, so a program never finds an
/// incomplete file.
class Capture {
public:
    /// The rate (Hz) and the number of channels, which cannot change within a file.
    struct Form {
        double rate;
        std::uint32_t channels;
        bool operator==(const Form& other) const { return rate == other.rate && channels == other.channels; }
    };

    /// Create the file and start the thread that writes the file.
    /// Errors   Null, with the reason in `error`. Throws std::bad_alloc, and then leaves no file.
    /// [any]
    static std::shared_ptr<Capture> open(const std::string& path, const Form& form, std::string& error);
    ~Capture();

    /// Append one interleaved slice. If the file has samples, a slice of another form ends the file.
    /// With `mayWait` set, write() writes the slice to the file itself. Without `mayWait` the background
    /// thread does; if its ring buffer is full, the slice is dropped, and finish() reports the gap.
    /// Allocates nothing. One call at a time.
    /// [audio]
    void write(const float* samples, std::uint32_t frames, const Form& form, bool mayWait);

    /// Write the samples that are still in the ring buffer, close the file and give the file its final name.
    /// A second call does nothing.
    /// Errors   False, with the reason in `error`, if any sample is missing in the file.
    /// No write() is in progress.
    /// [any]
    bool finish(std::string& error);

    const std::string& path() const { return path_; }

private:
    Capture() = default;
    void writeThrough(const float* samples, std::size_t count);
    void append(const float* samples, std::size_t count);
    void run();
    /// Write a span of the ring buffer to the file. Returns its number of samples. The caller holds
    /// `writing_`.
    std::size_t writeSpan();
    void discard();

    std::string path_, temporaryPath_;
    FloatWave file_;
    Form form_ = {};
    std::vector<float> ring_;
    /// Total samples put into and taken from the ring buffer.
    std::atomic<std::uint64_t> written_{0}, taken_{0};
    std::atomic<bool> isEnding_{false}, hasLost_{false}, hasChanged_{false};
    std::atomic<int> failure_{0}; ///< errno of the first failed file write; 0 without a failure
    std::mutex writing_;          ///< held during a file write; write() locks it only with `mayWait`
    Signal wake_;
    std::thread thread_;
    bool isFinished_ = true; ///< false from the start of the thread until finish()
};

} // namespace kvxplatform::hal
