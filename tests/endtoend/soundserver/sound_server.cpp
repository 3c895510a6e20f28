#include "tests/endtoend/soundserver/sound_server.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace endtoend {
namespace {

const char* const serverName = "kvx-test";

void ignoreMessage(const char*) {}

bool answers()
{
    jack_client_t* client = jack_client_open("probe", JackNoStartServer, nullptr);
    if (client) jack_client_close(client);
    return client != nullptr;
}

} // namespace

// All test servers have one name and run one at a time, because jackd can list few servers on a machine, and
// lists a killed server until another server of that name starts.
SoundServer::SoundServer(int sampleRate, int periodFrames)
    : lockFile_(open("/tmp/kvx-sound-server.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666))
{
    flock(lockFile_, LOCK_EX);
    for (const auto& [name, value] : environment()) setenv(name.c_str(), value.c_str(), 1);
    jack_set_error_function(ignoreMessage);
    jack_set_info_function(ignoreMessage);
    // With -S, jackd waits for its clients in each cycle, so a busy machine delays the sound without losing
    // samples. setpriv ends the server with the test, because a remaining server would block all later
    // servers.
    server_ = std::make_unique<support::Child>(std::vector<std::string>{
        "setpriv", "--pdeathsig", "KILL", "jackd", "-S", "-t", "5000", "-r", "-n", serverName, "-d", "dummy",
        "-r", std::to_string(sampleRate), "-p", std::to_string(periodFrames)});
    for (int tries = 0; tries < 200 && server_->isRunning(); ++tries) {
        if (answers()) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    server_->send(SIGTERM);
    const auto result = server_->wait();
    close(lockFile_);
    throw std::runtime_error("the sound server does not start: " + result.out + result.err);
}

SoundServer::~SoundServer()
{
    server_->send(SIGTERM);
    server_->send(SIGCONT);
    for (int tries = 0; tries < 100 && server_->isRunning(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    server_.reset(); // kills the server if it still runs
    close(lockFile_);
}

void SoundServer::kill() { server_->send(SIGKILL); }

void SoundServer::suspend() { server_->send(SIGSTOP); }

support::Child::Environment SoundServer::environment() const
{
    return {{"JACK_DEFAULT_SERVER", serverName},
            {"JACK_NO_START_SERVER", "1"},
            {"JACK_NO_AUDIO_RESERVATION", "1"}};
}

Recorder::Recorder(double maximumSeconds)
{
    client_ = jack_client_open("recorder", JackNoStartServer, nullptr);
    if (!client_) throw std::runtime_error("the sound server does not accept the recorder");
    samples_.resize(std::size_t(maximumSeconds * sampleRate()) * 2);
    jack_set_process_callback(client_, process, this);
    ports_[0] = jack_port_register(client_, "left", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    ports_[1] = jack_port_register(client_, "right", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    jack_activate(client_);
}

Recorder::~Recorder() { jack_client_close(client_); }

int Recorder::sampleRate() const { return int(jack_get_sample_rate(client_)); }

// The ports that are connected to the playback ports belong to the stream; clients also create temporary
// ports.
bool Recorder::connectToPlayer()
{
    const char* const playbackPorts[2] = {"system:playback_1", "system:playback_2"};
    for (int i = 0; i < 2; ++i) {
        if (isConnected_[i]) continue;
        const char** sources =
            jack_port_get_all_connections(client_, jack_port_by_name(client_, playbackPorts[i]));
        if (sources) playerName_ = std::string(sources[0]).substr(0, std::string(sources[0]).find(':'));
        if (sources) isConnected_[i] = jack_connect(client_, sources[0], jack_port_name(ports_[i])) == 0;
        jack_free(sources);
    }
    return isConnected_[0] && isConnected_[1];
}

int Recorder::process(jack_nframes_t frames, void* context)
{
    auto& recorder = *static_cast<Recorder*>(context);
    const auto* left = static_cast<const float*>(jack_port_get_buffer(recorder.ports_[0], frames));
    const auto* right = static_cast<const float*>(jack_port_get_buffer(recorder.ports_[1], frames));
    std::size_t count = recorder.count_.load(std::memory_order_relaxed);
    for (jack_nframes_t i = 0; i < frames && count + 2 <= recorder.samples_.size(); ++i) {
        recorder.samples_[count++] = left[i];
        recorder.samples_[count++] = right[i];
    }
    recorder.count_.store(count, std::memory_order_release);
    const auto isSound = [](float sample) { return sample != 0.0f; };
    if (std::any_of(left, left + frames, isSound) || std::any_of(right, right + frames, isSound))
        recorder.hasSound_ = true;
    return 0;
}

std::vector<float> Recorder::samples() const
{
    const std::size_t count = count_.load(std::memory_order_acquire);
    return {samples_.begin(), samples_.begin() + std::ptrdiff_t(count)};
}

} // namespace endtoend
