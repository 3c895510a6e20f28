// Calls to the JACK server, which may not respond, and detection of the server's end. PortAudio may be a
// client of this server.
#pragma once

#include <functional>

namespace kvxplatform::hal {

/// Run `work` on a new thread and wait at most 5 seconds for its end. If the sound server does not respond,
/// the new thread remains blocked, so `work` must own all objects that it uses. If no thread can be started,
/// `work` runs on the caller's thread and may block as long as the server does.
/// Returns  false if `work` has not ended in time.
/// [any]
bool endsInTime(const std::function<void()>& work);

/// Watch for the end of the server through a separate JACK client, because PortAudio reports the end to open
/// streams only. watchServer, stopWatchingServer and isServerAlive block as long as the server does not
/// respond.
/// The caller holds portAudioLock.
/// [any]
void watchServer();
void stopWatchingServer();

/// Find out by a request whether the server is alive, because JACK notifies clients of the server's end with
/// a delay. Returns true if there is no server to watch.
/// [any]
bool isServerAlive();

/// Have `wake` called when the server ends, on a thread of JACK; call it now if the server has ended already.
/// [any]
void callAtServerEnd(void (*wake)());

/// Whether the server has ended. PortAudio must not close its streams or terminate after that, because an
/// assertion in PortAudio would end the process.
/// [any]
bool hasServerEnded();

} // namespace kvxplatform::hal
