// A test with one object and a spy instead of the platform. At its end no component, mixer, handle or memory
// is left.
#pragma once

#include "tests/soundstream/sound_spy.h"
#include "tests/soundstream/stream_object.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>

namespace soundstream_test {

/// An exception of a type that the plug-in does not know.
struct Thrown {};

class StreamTest : public testing::Test {
protected:
    StreamTest();
    ~StreamTest() override;

    /// Start again with a new platform and a new object.
    void startOver();

    StreamObject& object() { return *object_; }

    /// InitComponent and OpenComponent, in a built program; the calls are not recorded.
    void open();

    /// An output unit.
    HostInteger unit() const { return reinterpret_cast<HostInteger>(&unit_); }

    /// An instance that a client has opened.
    ComponentInstance openInstance();
    /// The same, with an initialised device.
    ComponentInstance openInstanceWithMixer();

    /// Send a request to an instance, or with any storage.
    static ComponentResult send(ComponentInstance instance, SInt16 selector,
                                std::initializer_list<long> words);
    static ComponentResult sendWith(Handle storage, SInt16 selector, std::initializer_list<long> words);
    void closeInstance(ComponentInstance instance);

    static soundstream::QTSoundStreamGlobals* globalsOf(ComponentInstance instance)
    {
        return reinterpret_cast<soundstream::QTSoundStreamGlobals*>(sound_spy::storageOf(instance));
    }

    /// Destroy the object, close the instances, and expect that nothing is left.
    void expectNothingLeft();

private:
    std::optional<StreamObject> object_;
    std::vector<ComponentInstance> instances_;
    char unit_ = 0;
};

} // namespace soundstream_test
