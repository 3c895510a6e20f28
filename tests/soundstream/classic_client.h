// A classic sound program on the real platform: it finds the component by its description, opens it and
// plays.
#pragma once

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <initializer_list>
#include <string>

namespace soundstream_test {

/// The component registered last; null if there is none.
Component findComponent();
/// The first match, as a simple client takes it; null if there is none.
Component findFirstComponent();

/// Unregister every component of the bridge.
void unregisterAll();

/// Send any request to an instance.
ComponentResult send(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words);

/// The platform's live-object count of that kind.
UInt32 alive(const std::string& kind);

/// An instance with an initialised device and one source; without a component, neither.
class ClassicClient {
public:
    ClassicClient() : ClassicClient(findComponent()) {}
    explicit ClassicClient(Component component);
    ~ClassicClient();
    ClassicClient(const ClassicClient&) = delete;
    ClassicClient& operator=(const ClassicClient&) = delete;

    explicit operator bool() const { return source != nullptr; }

    /// Close the instance; a second call does nothing.
    void close();

    ComponentResult play(SoundParamBlock& block, long actions = 0);
    ComponentResult start();
    ComponentResult stop();
    ComponentResult pause();

    ComponentInstance instance = nullptr;
    SoundSource source = nullptr;
};

/// A parameter block for `frames` frames of 16-bit stereo at 44100 Hz and full volume.
/// Owner  the samples stay the caller's.
SoundParamBlock blockOf(const void* samples, long frames, OSType format = 'sowt');

} // namespace soundstream_test
