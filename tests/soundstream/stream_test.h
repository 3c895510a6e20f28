// One object, and a spy in the platform's place. At the end nothing is left over: no component, no mixer, no
// handle, no memory.
#pragma once

#include "tests/soundstream/sound_spy.h"
#include "tests/soundstream/stream_object.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>

namespace soundstream_test {

/// A thing that the plug-in has never heard of, to be thrown at it.
struct Thrown {};

class StreamTest : public testing::Test {
protected:
    StreamTest();
    ~StreamTest() override;

    /// Begin anew: another platform, another object.
    void startOver();

    StreamObject& object() { return *object_; }

    /// InitComponent and OpenComponent, in a built program; then forget the calls.
    void open();

    /// A unit to attach to.
    HostInteger unit() const { return reinterpret_cast<HostInteger>(&unit_); }

    /// An instance opened by a client, with its storage.
    ComponentInstance openInstance();
    /// The same with a mixer.
    ComponentInstance openInstanceWithMixer();

    /// Send a request to an instance, or with a storage, as the platform does.
    static ComponentResult send(ComponentInstance instance, SInt16 selector,
                                std::initializer_list<long> words);
    static ComponentResult sendWith(Handle storage, SInt16 selector, std::initializer_list<long> words);
    void closeInstance(ComponentInstance instance);

    static soundstream::QTSoundStreamGlobals* globalsOf(ComponentInstance instance)
    {
        return reinterpret_cast<soundstream::QTSoundStreamGlobals*>(sound_spy::storageOf(instance));
    }

    /// Destroy what there is, and expect that nothing is left over.
    void expectNothingLeft();

private:
    std::optional<StreamObject> object_;
    std::vector<ComponentInstance> instances_;
    char unit_ = 0;
};

} // namespace soundstream_test
