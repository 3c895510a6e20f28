// A classic sound program over the real platform: it finds the component by its description, opens it, and
// plays.
#pragma once

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <initializer_list>
#include <string>

namespace soundstream_test {

/// The component registered last; null: none.
Component findComponent();
/// The first match, as a simple client takes it; null: none.
Component findFirstComponent();

/// Take back what others left registered.
void unregisterAll();

/// Send any request to an instance.
ComponentResult send(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words);

/// How many of that kind are alive in the platform.
UInt32 alive(const std::string& kind);

/// An instance with its device initialised and one source. Nothing is opened where there is no component.
class ClassicClient {
public:
    ClassicClient() : ClassicClient(findComponent()) {}
    explicit ClassicClient(Component component);
    ~ClassicClient();
    ClassicClient(const ClassicClient&) = delete;
    ClassicClient& operator=(const ClassicClient&) = delete;

    explicit operator bool() const { return source != nullptr; }

    /// Once; a second call does nothing.
    void close();

    ComponentResult play(SoundParamBlock& block, long actions = 0);
    ComponentResult start();
    ComponentResult stop();
    ComponentResult pause();

    ComponentInstance instance = nullptr;
    SoundSource source = nullptr;
};

/// A block of 16-bit stereo at 44100 Hz and full volume, of `frames` frames that it does not own.
SoundParamBlock blockOf(const void* samples, long frames, OSType format = 'sowt');

} // namespace soundstream_test
