// Who is told of the head's slices.
#include "tests/platform/audiounit/feeder.h"
#include "tests/platform/audiounit/stepped_device.h"
#include "tests/platform/audiounit/unit.h"
#include "tests/platform/augraph/calls.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

struct Told {
    int before = 0, after = 0;
    UInt32 frames = 0;
    static OSStatus notify(void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp*, UInt32,
                           UInt32 frames, AudioBufferList*)
    {
        Told& self = *static_cast<Told*>(context);
        self.before += *flags & kAudioUnitRenderAction_PreRender ? 1 : 0;
        self.after += *flags & kAudioUnitRenderAction_PostRender ? 1 : 0;
        self.frames = frames;
        return noErr;
    }
};

class Notifies : public testing::Test {
protected:
    Notifies() : device(44100, 2, 100), node(graph.add('auou', 'ahal')) { device.makeDefault(); }
    void start()
    {
        ASSERT_EQ(graph.setCallback(node, ignored, nullptr), noErr);
        ASSERT_EQ(AUGraphInitialize(graph), noErr);
        ASSERT_EQ(AUGraphStart(graph), noErr);
    }
    SteppedDevice device;
    Graph graph;
    AUNode node;
    Told told;
};

TEST_F(Notifies, AreToldBeforeAndAfterEachSlice)
{
    ASSERT_EQ(AUGraphAddRenderNotify(graph, Told::notify, &told), noErr) << "before it is open";
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    start();
    device.step(300);
    EXPECT_EQ(told.before, 3);
    EXPECT_EQ(told.after, 3);
    EXPECT_EQ(told.frames, 100u);
}

TEST_F(Notifies, ComeAndGoWhileItRuns)
{
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    start();
    device.step(100);
    ASSERT_EQ(AUGraphAddRenderNotify(graph, Told::notify, &told), noErr);
    device.step(100);
    EXPECT_EQ(told.before, 1);
    ASSERT_EQ(AUGraphAddRenderNotify(graph, Told::notify, &told), noErr);
    device.step(100);
    EXPECT_EQ(told.before, 3) << "added twice, told twice";
    ASSERT_EQ(AUGraphRemoveRenderNotify(graph, Told::notify, &told), noErr);
    device.step(100);
    EXPECT_EQ(told.before, 4);
    ASSERT_EQ(AUGraphRemoveRenderNotify(graph, Told::notify, &told), noErr);
    device.step(100);
    EXPECT_EQ(told.before, 4);
    EXPECT_EQ(told.after, 4);
    EXPECT_EQ(AUGraphRemoveRenderNotify(graph, Told::notify, &told), kAudioUnitErr_InvalidPropertyValue);
}

TEST_F(Notifies, GoWithEveryOutputUnit)
{
    Told removed;
    ASSERT_EQ(AUGraphAddRenderNotify(graph, Told::notify, &told), noErr);
    ASSERT_EQ(AUGraphAddRenderNotify(graph, Told::notify, &removed), noErr);
    ASSERT_EQ(AUGraphRemoveRenderNotify(graph, Told::notify, &removed), noErr);
    for (int turn = 1; turn <= 3; ++turn) {
        ASSERT_EQ(AUGraphOpen(graph), noErr);
        start();
        device.step(100);
        EXPECT_EQ(told.before, turn) << "opened again";
        ASSERT_EQ(AUGraphClose(graph), noErr);
    }
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    ASSERT_EQ(AUGraphRemoveNode(graph, node), noErr);
    node = graph.add('auou', 'ahal');
    start();
    device.step(100);
    EXPECT_EQ(told.before, 4) << "another output";
    EXPECT_EQ(removed.before, 0);
}

TEST_F(Notifies, ThatTheUnitHasLostGoAllTheSame)
{
    ASSERT_EQ(AUGraphOpen(graph), noErr);
    ASSERT_EQ(AUGraphAddRenderNotify(graph, Told::notify, &told), noErr);
    ASSERT_EQ(AudioUnitRemoveRenderNotify(graph.unit(node), Told::notify, &told), noErr);
    EXPECT_EQ(AUGraphRemoveRenderNotify(graph, Told::notify, &told), noErr);
    EXPECT_EQ(AUGraphRemoveRenderNotify(graph, Told::notify, &told), kAudioUnitErr_InvalidPropertyValue);
}

} // namespace
