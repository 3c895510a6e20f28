// A test fixture with one host object, and with the sound spy instead of the platform. The fixture expects
// that no component, mixer, handle or memory block is left at the end of the test.
#pragma once

#include "tests/soundstream/sound_spy.h"
#include "tests/soundstream/stream_object.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>

namespace soundstream_test {

/// An exception whose type the plug-in does not know.
struct Thrown {};

class StreamTest : public testing::Test {
protected:
    StreamTest();
    ~StreamTest() override;

    /// Restart the test with a reset platform and a new object.
    void startOver();

    StreamObject& object() { return *object_; }

    /// Call InitComponent and OpenComponent, as in a built program. The calls are not recorded.
    void open();

    /// The handle of a simulated output unit.
    HostInteger unit() const { return reinterpret_cast<HostInteger>(&unit_); }

    /// Create an instance and send it the open request of a client.
    ComponentInstance openInstance();
    /// Open an instance, and initialise its device.
    ComponentInstance openInstanceWithMixer();

    /// Send a request to an instance (send), or with any storage pointer (sendWith).
    static ComponentResult send(ComponentInstance instance, SInt16 selector,
                                std::initializer_list<long> words);
    static ComponentResult sendWith(Handle storage, SInt16 selector, std::initializer_list<long> words);
    void closeInstance(ComponentInstance instance);

    static soundstream::QTSoundStreamGlobals* globalsOf(ComponentInstance instance)
    {
        return reinterpret_cast<soundstream::QTSoundStreamGlobals*>(sound_spy::storageOf(instance));
    }

    /// Destroy the object, close the instances, and expect that no platform object or memory block is left.
    void expectNothingLeft();

private:
    std::optional<StreamObject> object_;
    std::vector<ComponentInstance> instances_;
    char unit_ = 0;
};

} // namespace soundstream_test
