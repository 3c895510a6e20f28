// A WAV file of 32-bit float that a background thread writes from a device's output.
#pragma once

#include "platform/hal/float_wave.h"
#include "platform/hal/signal.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kvxplatform::hal {

/// The file has a temporary name until it is finished, so a program never finds an incomplete file.
class Capture {
public:
    /// What cannot change within a file. Rate in Hz.
    struct Form {
        double rate;
        std::uint32_t channels;
        bool operator==(const Form& other) const { return rate == other.rate && channels == other.channels; }
    };

    /// Create the file and start the thread that writes it.
    /// Errors   Null, with the reason in `error`.
    /// [any]
    static std::shared_ptr<Capture> open(const std::string& path, const Form& form, std::string& error);
    ~Capture();

    /// Append one interleaved slice. A slice of another form ends the file, once the file has samples.
    /// Without space in the ring buffer it waits for the writer thread if `mayWait`; else it drops the slice,
    /// and finish() reports the gap. Allocates nothing. One call at a time.
    /// [audio]
    void write(const float* samples, std::uint32_t frames, const Form& form, bool mayWait);

    /// Write the rest, close the file and give it its name. A second call does nothing.
    /// Errors   False, with the reason in `error`, if any sample is missing.
    /// [any], no write() in progress
    bool finish(std::string& error);

    const std::string& path() const { return path_; }

private:
    Capture() = default;
    void run();
    std::size_t writeSpan();
    void discard();

    std::string path_, temporaryPath_;
    FloatWave file_;
    Form form_ = {};
    std::vector<float> ring_;
    std::atomic<std::uint64_t> written_{0}, taken_{0}; ///< samples; the difference is in the ring
    std::atomic<bool> isEnding_{false}, hasLost_{false}, hasChanged_{false};
    std::atomic<int> failure_{0}; ///< errno of the first write that failed
    Signal wake_;
    std::thread thread_;
    bool isFinished_ = false;
};

} // namespace kvxplatform::hal
