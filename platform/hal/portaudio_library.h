// Starts, stops and calls PortAudio. If the sound server does not respond, a caller waits at most 5 seconds.
#pragma once

#include <functional>
#include <mutex>
#include <string>

namespace kvxplatform::hal {

/// Serialises calls of PortAudio's functions, which do not support concurrent calls. The caller of every
/// function below holds this mutex, except for isPortAudioBlocked().
extern std::mutex portAudioLock;

// All functions: [any], not inside a cycle.

/// Start PortAudio with silenced message handlers, unless it is running.
/// Errors   False, with the reason in `error`.
bool startPortAudio(std::string& error);

/// Stop PortAudio. Returns false if the sound server does not respond or has ended; PortAudio then continues
/// to run.
bool stopPortAudio();

/// Run `work`, a function that calls PortAudio and owns all objects that it uses. Returns false if the sound
/// server does not respond; every later call then returns false at once.
bool callPortAudio(const std::function<void()>& work);

/// The names of PortAudio's host APIs, as "ALSA, OSS"; "" if PortAudio is not running.
std::string hostApiNames();

/// Whether a thread is blocked inside PortAudio and may never return.
bool isPortAudioBlocked();

} // namespace kvxplatform::hal
