// PortAudio itself: started and stopped, and called so that a sound server that does not answer blocks no
// caller for long.
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

/// False if a sound server does not answer or has ended: PortAudio then still runs.
bool stopPortAudio();

/// Run `work`, which calls PortAudio and owns all that it uses. False if a sound server does not answer it,
/// and for every later call.
bool callPortAudio(const std::function<void()>& work);

/// Whether a thread is inside PortAudio and may never return.
bool isPortAudioBlocked();

} // namespace kvxplatform::hal
