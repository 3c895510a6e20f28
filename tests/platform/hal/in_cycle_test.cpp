// Procedures that add, start, stop and remove procedures while they are called inside an I/O cycle.
#include "tests/platform/hal/test_device.h"

#include <memory>

namespace {

using namespace haltest;

TEST(InCycle, StopOfItselfIsTheLastCallAndKeepsItsOutput)
{
    Device device;
    Recording recording(device);
    Procedure* self = nullptr;
    Procedure procedure(device, [&](const Call& call) {
        call.fill(0.5f);
        if (self->calls() == 3) EXPECT_EQ(self->stop(), noErr);
    });
    self = &procedure;
    procedure.start();
    KVXPlatformStep(device, 10 * 64);
    EXPECT_EQ(procedure.calls(), 3);
    EXPECT_EQ(recording.samples, std::vector<float>(3 * 128, 0.5f));

    EXPECT_EQ(procedure.start(), noErr) << "it is still registered";
    KVXPlatformStep(device, 64);
    EXPECT_EQ(procedure.calls(), 4);
}

TEST(InCycle, RemovalOfItselfIsTheLastCall)
{
    Device device;
    const uint32_t before = liveCount("IOProc");
    Procedure* self = nullptr;
    Procedure procedure(device, [&](const Call&) {
        EXPECT_EQ(self->remove(), noErr);
        EXPECT_EQ(liveCount("IOProc"), before) << "it is released";
    });
    self = &procedure;
    const AudioDeviceIOProcID id = procedure.id();
    EXPECT_EQ(liveCount("IOProc"), before + 1);
    procedure.start();
    KVXPlatformStep(device, 5 * 64);
    EXPECT_EQ(procedure.calls(), 1);
    EXPECT_EQ(AudioDeviceStart(device, id), kAudioHardwareIllegalOperationError)
        << "it is no longer registered";
}

OSStatus removeMyself(AudioDeviceID device, const AudioTimeStamp*, const AudioBufferList*,
                      const AudioTimeStamp*, AudioBufferList*, const AudioTimeStamp*, void* client)
{
    ++*static_cast<int*>(client);
    EXPECT_EQ(AudioDeviceStop(device, removeMyself), noErr);
    EXPECT_EQ(AudioDeviceRemoveIOProc(device, removeMyself), noErr);
    return noErr;
}

TEST(InCycle, ProcedureThatRemovedItselfCanBeAddedAgain)
{
    Device device;
    int calls = 0;
    for (int i = 1; i <= 100; ++i) {
        ASSERT_EQ(AudioDeviceAddIOProc(device, removeMyself, &calls), noErr) << i;
        ASSERT_EQ(AudioDeviceStart(device, removeMyself), noErr) << i;
        KVXPlatformStep(device, 128);
        ASSERT_EQ(calls, i);
    }
    EXPECT_EQ(liveCount("IOProc"), 0u);
}

TEST(InCycle, StoppedProcedureIsNotCalledLaterInTheSlice)
{
    for (bool isRemoved : {false, true}) {
        SCOPED_TRACE(isRemoved ? "removed" : "stopped");
        Device device;
        Procedure* other = nullptr;
        Procedure first(device, [&](const Call&) {
            if (first.calls() == 2) EXPECT_EQ(isRemoved ? other->remove() : other->stop(), noErr);
        });
        Procedure second(device, [](const Call& call) { call.fill(1); });
        other = &second;
        Recording recording(device);
        first.start();
        second.start();
        KVXPlatformStep(device, 4 * 64);
        EXPECT_EQ(first.calls(), 4);
        EXPECT_EQ(second.calls(), 1);
        EXPECT_EQ(recording.samples[0], 1.0f);
        EXPECT_EQ(recording.samples[128], 0.0f);
    }
}

TEST(InCycle, AnotherCanBeStarted)
{
    Device device;
    Procedure late(device, [](const Call& call) { call.fill(1); });
    Procedure first(device, [&](const Call&) {
        if (first.calls() == 2) EXPECT_EQ(late.start(), noErr);
    });
    first.start();
    KVXPlatformStep(device, 5 * 64);
    EXPECT_EQ(first.calls(), 5);
    EXPECT_GE(late.calls(), 3);
    EXPECT_LE(late.calls(), 4) << "from this slice or the next on";
}

TEST(InCycle, OthersCanBeAdded)
{
    Device device;
    std::vector<std::unique_ptr<Procedure>> added;
    Procedure first(device, [&](const Call&) {
        if (first.calls() > 50) return;
        added.push_back(std::make_unique<Procedure>(device, [](const Call& call) { call.fill(1); }));
        EXPECT_EQ(added.back()->start(), noErr);
    });
    Recording recording(device);
    first.start();
    KVXPlatformStep(device, 60 * 64);
    ASSERT_EQ(added.size(), 50u);
    EXPECT_EQ(recording.samples.back(), 50.0f);
}

TEST(InCycle, ProcedureOfAnotherDeviceCanBeStopped)
{
    Device one, two;
    Procedure second(two, [](const Call&) {});
    Procedure first(one, [&](const Call&) { EXPECT_EQ(second.stop(), noErr); });
    second.start();
    first.start();
    KVXPlatformStep(one, 64);
    EXPECT_EQ(KVXPlatformStep(two, 64), 0u);
}

TEST(InCycle, PropertiesCanBeRead)
{
    Device device;
    AudioStreamBasicDescription format = {};
    Procedure procedure(device, [&](const Call& call) {
        UInt32 size = sizeof format;
        EXPECT_EQ(AudioDeviceGetProperty(call.device, 0, 0, kAudioDevicePropertyStreamFormat, &size, &format),
                  noErr);
    });
    procedure.start();
    KVXPlatformStep(device, 64);
    EXPECT_EQ(format.mSampleRate, 44100.0);
}

TEST(InCycle, SettingsCanBeChanged)
{
    Device device;
    Procedure procedure(device, [&](const Call& call) {
        if (procedure.calls() == 1) {
            EXPECT_EQ(set<UInt32>(call.device, address(kAudioDevicePropertyBufferFrameSize), 32), noErr);
        }
        if (call.frames() == 32) EXPECT_EQ(procedure.stop(), noErr);
    });
    procedure.start();
    // The procedure stops itself in the first slice of the new size.
    waitFor([&] { return KVXPlatformStep(device, 64) == 0; });
    EXPECT_GT(procedure.calls(), 1);
}

} // namespace
