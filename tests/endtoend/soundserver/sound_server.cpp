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

// Servers on a machine stand in a short list, which a killed one stays in until one of the same name comes.
// So all of ours bear one name, and take turns.
SoundServer::SoundServer(int sampleRate)
    : turn_(open("/tmp/kvx-sound-server.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666))
{
    flock(turn_, LOCK_EX);
    for (const auto& [name, value] : environment()) setenv(name.c_str(), value.c_str(), 1);
    jack_set_error_function(ignoreMessage);
    jack_set_info_function(ignoreMessage);
    // -S: a cycle waits for its clients, so that a busy machine delays the sound but loses none of it.
    // It dies with the test, however that ends: a server left behind would stand in every later one's way.
    server_ = std::make_unique<support::Child>(
        std::vector<std::string>{"setpriv", "--pdeathsig", "KILL", "jackd", "-S", "-t", "5000", "-r", "-n",
                                 serverName, "-d", "dummy", "-r", std::to_string(sampleRate)});
    for (int looks = 0; looks < 200 && server_->isRunning(); ++looks) {
        if (answers()) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    server_->send(SIGTERM);
    const auto result = server_->wait();
    close(turn_);
    throw std::runtime_error("the sound server does not answer: " + result.out + result.err);
}

SoundServer::~SoundServer()
{
    server_->send(SIGTERM);
    server_->send(SIGCONT);
    for (int tries = 0; tries < 100 && server_->isRunning(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    server_.reset(); // by force, if need be
    close(turn_);
}

void SoundServer::kill() { server_->send(SIGKILL); }

void SoundServer::freeze() { server_->send(SIGSTOP); }

support::Child::Environment SoundServer::environment() const
{
    return {{"JACK_DEFAULT_SERVER", serverName},
            {"JACK_NO_START_SERVER", "1"},
            {"JACK_NO_AUDIO_RESERVATION", "1"}};
}

Recorder::Recorder(double secondsAtMost)
{
    client_ = jack_client_open("recorder", JackNoStartServer, nullptr);
    if (!client_) throw std::runtime_error("the recorder is not let in by the sound server");
    samples_.resize(std::size_t(secondsAtMost * sampleRate()) * 2);
    jack_set_process_callback(client_, process, this);
    ports_[0] = jack_port_register(client_, "left", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    ports_[1] = jack_port_register(client_, "right", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    jack_activate(client_);
}

Recorder::~Recorder() { jack_client_close(client_); }

int Recorder::sampleRate() const { return int(jack_get_sample_rate(client_)); }

// What is connected to the loudspeakers is the stream; a client may have other ports that come and go.
bool Recorder::connectToPlayer()
{
    const char* const loudspeakers[2] = {"system:playback_1", "system:playback_2"};
    for (int i = 0; i < 2; ++i) {
        if (isConnected_[i]) continue;
        const char** players =
            jack_port_get_all_connections(client_, jack_port_by_name(client_, loudspeakers[i]));
        if (players) isConnected_[i] = jack_connect(client_, players[0], jack_port_name(ports_[i])) == 0;
        jack_free(players);
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
        recorder.hasHeardSound_ = true;
    return 0;
}

std::vector<float> Recorder::samples() const
{
    const std::size_t count = count_.load(std::memory_order_acquire);
    return {samples_.begin(), samples_.begin() + std::ptrdiff_t(count)};
}

} // namespace endtoend
