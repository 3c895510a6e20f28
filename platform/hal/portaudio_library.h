// Starts, stops and calls PortAudio. A sound server that does not respond blocks a caller for 5 seconds only.
#pragma once

#include <functional>
#include <mutex>
#include <string>

namespace kvxplatform::hal {

/// Guards PortAudio's functions, which allow one caller at a time. All functions but isPortAudioBlocked()
/// require it.
extern std::mutex portAudioLock;

// All functions: [any], not inside a cycle.

/// Start PortAudio, unless it runs, with its message handlers silenced.
/// Errors   False, with the reason in `error`.
bool startPortAudio(std::string& error);

/// False if a sound server does not respond or has ended: PortAudio then continues to run.
bool stopPortAudio();

/// Run `work`, which calls PortAudio and owns all that it uses. False if a sound server does not respond,
/// and for every later call.
bool callPortAudio(const std::function<void()>& work);

/// Whether a thread is inside PortAudio and may never return.
bool isPortAudioBlocked();

} // namespace kvxplatform::hal
