#include "platform/hal/portaudio_library.h"

#include "platform/hal/sound_server.h"
#include "platform/support/silenced_streams.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <memory>
#include <portaudio.h>

namespace kvxplatform::hal {

namespace {

bool isStarted = false; // whether PortAudio is started; guarded by portAudioLock
// Whether a thread is blocked inside PortAudio; changed only by the holder of portAudioLock.
std::atomic<bool> isBlocked{false};

/// Call a function that takes one argument, if a library of this process has the function.
template <class Function, class Argument>
void callIfPresent(const char* name, Argument argument)
{
    if (void* address = dlsym(RTLD_DEFAULT, name)) reinterpret_cast<Function*>(address)(argument);
}

// ---- silence: ALSA and JACK, which PortAudio calls, print messages for every failed attempt ----

void ignoreALSA(const char*, int, const char*, int, const char*, ...) {}
void ignoreJACK(const char*) {}

void silenceMessages()
{
    using ALSAHandler = void (*)(const char*, int, const char*, int, const char*, ...);
    callIfPresent<int(ALSAHandler)>("snd_lib_error_set_handler", ignoreALSA);
    callIfPresent<void(void (*)(const char*))>("jack_set_error_function", ignoreJACK);
    callIfPresent<void(void (*)(const char*))>("jack_set_info_function", ignoreJACK);
}

} // namespace

std::mutex portAudioLock;

bool isPortAudioBlocked() { return isBlocked; }

bool callPortAudio(const std::function<void()>& work)
{
    if (!isBlocked) isBlocked = !endsInTime(work);
    return !isBlocked;
}

bool startPortAudio(std::string& error)
{
    if (isStarted) return true;
    silenceMessages();
    const auto status = std::make_shared<PaError>(paNoError);
    const bool isAnswered = callPortAudio([status] {
        // JACK's database has no message handler, and reports a server of the other architecture (32 or 64
        // bits). If the call never returns, the filters stay; they pass on the output of other threads.
        const SilencedStreams silenced;
        // The patch bay shows this name for the client. A name that JACK refuses leaves PortAudio's name.
        callIfPresent<PaError(const char*)>("PaJack_SetClientName", program_invocation_short_name);
        *status = Pa_Initialize();
        if (*status == paNoError && Pa_HostApiTypeIdToHostApiIndex(paJACK) >= 0) watchServer();
    });
    silenceMessages(); // PortAudio's start has replaced the JACK message handlers, so silence them again
    isStarted = isAnswered && *status == paNoError;
    if (!isAnswered)
        error = "the sound server does not answer; restart it, or set `KVX_AUDIO_DEVICE=simulated`";
    else if (!isStarted)
        error = std::string("PortAudio does not start: ") + Pa_GetErrorText(*status) +
                "; check the sound system, or set `KVX_AUDIO_DEVICE=simulated`";
    return isStarted;
}

std::string hostApiNames()
{
    std::string names;
    if (!isStarted) return names;
    for (int i = 0; i < Pa_GetHostApiCount(); ++i)
        if (const PaHostApiInfo* const api = Pa_GetHostApiInfo(i))
            names += (names.empty() ? "" : ", ") + std::string(api->name);
    return names;
}

bool stopPortAudio()
{
    if (!isStarted) return true;
    const auto isStopped = std::make_shared<bool>(false);
    const bool isAnswered = callPortAudio([isStopped] {
        *isStopped = isServerAlive();
        if (!*isStopped) return;
        stopWatchingServer();
        Pa_Terminate();
    });
    if (!isAnswered || !*isStopped) return false;
    isStarted = false;
    return true;
}

} // namespace kvxplatform::hal
