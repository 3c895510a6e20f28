// A classic sound program on the real platform. It finds the component by its description, opens it and
// plays.
#pragma once

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>
#include <KVXPlatform/KVXPlatform.h>

#include <initializer_list>
#include <string>

namespace soundstream_test {

/// The matching component that was registered last; null if there is none.
Component findComponent();
/// The first matching component, which a simple client would use; null if there is none.
Component findFirstComponent();

/// Unregister every component that matches the sound bridge's description.
void unregisterAll();

/// Send any request to an instance, with these arguments.
ComponentResult send(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words);

/// The platform's number of live objects of that kind, such as "Component".
UInt32 alive(const std::string& kind);

/// A client with an open instance, an initialised device and one source. If there is no component, it has
/// neither an instance nor a source.
class ClassicClient {
public:
    ClassicClient() : ClassicClient(findComponent()) {}
    explicit ClassicClient(Component component);
    ~ClassicClient();
    ClassicClient(const ClassicClient&) = delete;
    ClassicClient& operator=(const ClassicClient&) = delete;

    explicit operator bool() const { return source != nullptr; }

    /// Close the instance. A second call does nothing.
    void close();

    ComponentResult play(SoundParamBlock& block, long actions = 0);
    ComponentResult start();
    ComponentResult stop();
    ComponentResult pause();

    ComponentInstance instance = nullptr;
    SoundSource source = nullptr;
};

/// A parameter block for `frames` frames of 16-bit stereo at 44100 Hz and full volume.
/// Owner  the caller keeps the samples.
SoundParamBlock blockOf(const void* samples, long frames, OSType format = 'sowt');

} // namespace soundstream_test
