// A sound server of a test's own: jackd with its dummy driver, under a name of its own, ended by its own
// process id; and a client of it that records what another client plays.
#pragma once

#include "tests/support/child_process.h"

#include <jack/jack.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace endtoend {

class SoundServer {
public:
    /// Starts it and waits until it answers. Throws std::runtime_error when it does not.
    explicit SoundServer(int sampleRate);
    ~SoundServer();

    /// End it at once, as a crash would.
    void kill();

    /// Have it stop answering, though it is there.
    void freeze();

    /// For every program that is to find this server, and start none.
    support::Child::Environment environment() const;

private:
    int turn_; // a file, locked while the server is ours
    std::unique_ptr<support::Child> server_;
};

/// Records what goes to the first two loudspeakers.
class Recorder {
public:
    explicit Recorder(double secondsAtMost);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Connect to what plays to the loudspeakers, once something does. True when both channels are connected.
    bool connectToPlayer();

    /// Whether anything but silence has arrived, recorded or past the end of the recording.
    bool hasHeardSound() const { return hasHeardSound_; }

    /// All that was recorded, interleaved stereo.
    std::vector<float> samples() const;
    int sampleRate() const;

private:
    static int process(jack_nframes_t frames, void* context);

    jack_client_t* client_ = nullptr;
    jack_port_t* ports_[2] = {};
    bool isConnected_[2] = {};
    std::vector<float> samples_; // as long as may be needed; filled by the server's thread
    std::atomic<std::size_t> count_{0};
    std::atomic<bool> hasHeardSound_{false};
};

} // namespace endtoend
