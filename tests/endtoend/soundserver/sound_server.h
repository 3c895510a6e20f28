// A private sound server (jackd with its dummy driver), and a client that records the output of another
// client.
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
    /// Start the server, and wait until it accepts clients. Throws std::runtime_error after 10 seconds.
    explicit SoundServer(int sampleRate);
    ~SoundServer();

    /// End the server like a crash.
    void kill();

    /// Suspend the server process: it exists, but does not answer.
    void suspend();

    /// The environment of programs that use this server and start no other.
    support::Child::Environment environment() const;

private:
    int lockFile_; // file descriptor of a lock that is held while this server runs
    std::unique_ptr<support::Child> server_;
};

/// Records the signals of the first two playback ports of the server.
class Recorder {
public:
    explicit Recorder(double maximumSeconds);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Connect to the client that plays, if there is one. Returns true when both channels are connected.
    bool connectToPlayer();

    /// Whether a non-zero sample has arrived, even after the end of the recording.
    bool hasSound() const { return hasSound_; }

    /// The recorded samples, interleaved stereo.
    std::vector<float> samples() const;
    int sampleRate() const;

private:
    static int process(jack_nframes_t frames, void* context);

    jack_client_t* client_ = nullptr;
    jack_port_t* ports_[2] = {};
    bool isConnected_[2] = {};
    std::vector<float>
        samples_; // allocated for the whole recording; written by the thread of the server's client
    std::atomic<std::size_t> count_{0};
    std::atomic<bool> hasSound_{false};
};

} // namespace endtoend
