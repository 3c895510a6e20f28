// What a device plays, written to a WAV file of 32-bit float by a thread of its own.
#pragma once

#include "platform/hal/float_wave.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <semaphore.h>
#include <string>
#include <thread>
#include <vector>

namespace kvxplatform::hal {

/// The file stands under a temporary name until it is finished, so that no half-written one is ever found.
class Capture {
public:
    /// What a file has one of, from its beginning to its end. Hz.
    struct Form {
        double rate;
        std::uint32_t channels;
        bool operator==(const Form& other) const { return rate == other.rate && channels == other.channels; }
    };

    /// Open the file. Null, with the reason in `error`, if that cannot be.
    static std::shared_ptr<Capture> open(const std::string& path, const Form& form, std::string& error);
    ~Capture();

    /// Take one slice, interleaved. Allocates nothing. The first one of another form ends the file, once
    /// something is in it.
    /// `mayWait` true: waits for room. False: what finds no room is lost, and finish() says so.
    /// Thread  one writer at a time, the device's cycle.
    void write(const float* samples, std::uint32_t frames, const Form& form, bool mayWait);

    /// Write what is left, close the file and give it its name. False, with the reason in `error`, if
    /// anything is not in it. A second call does nothing.
    bool finish(std::string& error);

    const std::string& path() const { return path_; }

private:
    Capture() = default;
    void run();
    std::size_t takeOut();
    void discard(); ///< before it began

    std::string path_, temporaryPath_;
    FloatWave file_;
    Form form_ = {};
    std::vector<float> ring_;
    std::atomic<std::uint64_t> written_{0}, taken_{0}; ///< samples; the difference waits in the ring
    std::atomic<bool> isEnding_{false}, hasLost_{false}, hasChanged_{false};
    std::atomic<int> failure_{0}; ///< errno of the first write that failed
    sem_t wake_;
    std::thread thread_;
    bool isFinished_ = false;
};

} // namespace kvxplatform::hal
