// A sound server for tests (jackd with the dummy driver), and a client of the server that records the output
// of another client.
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
    /// Start the server, and wait until the server accepts clients.
    /// Errors  throws std::runtime_error after 10 seconds.
    explicit SoundServer(int sampleRate, int periodFrames = 1024);
    ~SoundServer();

    /// Kill the server process, as a crash does.
    void kill();

    /// Suspend the server process: the process exists, but does not answer.
    void suspend();

    /// Return environment variables with which a program uses this server and starts no other server.
    support::Child::Environment environment() const;

private:
    int lockFile_; // file descriptor of a file lock that is held while the server runs
    std::unique_ptr<support::Child> server_;
};

/// Records the sound that reaches the first two playback ports of the server.
class Recorder {
public:
    explicit Recorder(double maximumSeconds);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Connect to the client that plays, if there is one.
    /// Returns  true when both channels are connected.
    bool connectToPlayer();

    /// The name of the client that plays; "" before connectToPlayer() has found it.
    const std::string& playerName() const { return playerName_; }

    /// Return whether a sample other than zero has arrived, also after the end of the recording.
    bool hasSound() const { return hasSound_; }

    /// Return the recorded samples as interleaved stereo.
    std::vector<float> samples() const;
    int sampleRate() const;

private:
    static int process(jack_nframes_t frames, void* context);

    jack_client_t* client_ = nullptr;
    jack_port_t* ports_[2] = {};
    bool isConnected_[2] = {};
    std::string playerName_;
    std::vector<float> samples_; // samples, allocated before the recording; a thread of JACK writes them
    std::atomic<std::size_t> count_{0};
    std::atomic<bool> hasSound_{false};
};

} // namespace endtoend
