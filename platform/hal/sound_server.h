// The JACK server that PortAudio may be a client of: calls that it never answers, and its end.
#pragma once

#include <functional>

namespace kvxplatform::hal {

/// Run `work` on its own thread and wait some seconds for its end. False if it has not ended by then: the
/// server does not answer, and the thread keeps waiting for it, so `work` must own all that it uses. If no
/// thread can be started, `work` runs on the caller's and may block for as long as the server does.
bool endsInTime(const std::function<void()>& work);

/// Notice the end of the server, through a client of our own; PortAudio reports it for open streams only.
/// Starting and stopping, as isServerAlive(), block for as long as the server does.
void watchServer();
void stopWatchingServer();

/// Have the server answer a request now: its end is reported to clients with a delay. True without a server.
bool isServerAlive();

/// Have `wake` called when the server ends, on a thread of JACK's, or at once if it has ended. [any]
void callAtServerEnd(void (*wake)());

/// Whether the server has ended: PortAudio asserts that it can close the server's streams and terminate, and
/// would end the process. [any]
bool hasServerEnded();

} // namespace kvxplatform::hal
