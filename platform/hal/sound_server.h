// The JACK server that PortAudio may be a client of: calls that it never answers, and its end.
#pragma once

#include <functional>

namespace kvxplatform::hal {

/// Run `work` on a thread of its own and wait some seconds for its end. False if it has not ended by then:
/// the server does not answer, and the thread is left waiting for it, so `work` owns all that it uses.
/// Without a thread to spare it runs on the caller's, and may block for as long as the server does.
bool endsInTime(const std::function<void()>& work);

/// Notice the end of the server, through a client of our own; PortAudio reports it for open streams only.
/// Blocks for as long as the server does, as does stopWatchingServer().
void watchServer();
void stopWatchingServer();

/// Have `wake` called when the server ends, on a thread of JACK's, or at once if it has ended. [any]
void callAtServerEnd(void (*wake)());

/// PortAudio must not be asked to close or terminate anything any more: it would end the process. [any]
bool hasServerEnded();

} // namespace kvxplatform::hal
