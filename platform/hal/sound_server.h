// The JACK server of which PortAudio may be a client: calls without a response, and the end of the server.
#pragma once

#include <functional>

namespace kvxplatform::hal {

/// Run `work` on a new thread and wait at most 5 seconds for its end. If the server does not respond, the
/// thread continues to wait, so `work` must own all that it uses. Without a thread, `work` runs on the
/// caller's thread and may block as long as the server does.
/// Returns  false if `work` has not ended.
/// [any]
bool endsInTime(const std::function<void()>& work);

/// Watch for the end of the server through a separate client: PortAudio reports it for open streams only.
/// These two and isServerAlive() block as long as the server does.
/// [any], with portAudioLock
void watchServer();
void stopWatchingServer();

/// Send a request to the server, as clients are notified of its end with a delay. True without a server.
/// [any]
bool isServerAlive();

/// Call `wake` when the server ends, on a thread of JACK, or now if it has ended.
/// [any]
void callAtServerEnd(void (*wake)());

/// Whether the server has ended. PortAudio then must not close its streams or terminate: an assertion there
/// would end the process.
/// [any]
bool hasServerEnded();

} // namespace kvxplatform::hal
