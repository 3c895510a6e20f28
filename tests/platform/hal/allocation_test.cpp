// An I/O cycle allocates no memory, unless one of its procedures adds another procedure. A capture that runs
// out of memory does not start.
#include "tests/platform/hal/test_device.h"
#include "tests/support/allocator_hook.h"
#include "tests/support/temporary_folder.h"

#include <filesystem>
#include <memory>

namespace {

using namespace haltest;

// A test's first procedure starts the count of the cycle's thread, so the count includes the mixing, the wait
// for the next slice and all later cycles.

TEST(CycleAllocation, IsCountedWhenAProcedureAllocates)
{
    const allocator_hook::Count count;
    Device device(Device::paced());
    std::atomic<bool> isDone{false};
    std::unique_ptr<int> block;
    Procedure procedure(device, [&](const Call&) {
        if (isDone) return;
        allocator_hook::watchThisThread(true);
        block = std::make_unique<int>(1);
        isDone = true;
    });
    procedure.start();
    waitFor([&] { return isDone.load(); });
    EXPECT_GE(count.heapCalls(), 1);
}

TEST(CycleAllocation, IsAbsentWhileADevicePlays)
{
    support::TemporaryFolder folder;
    const allocator_hook::Count count;
    Device device(Device::paced());
    Procedure a(device, [](const Call& call) {
        allocator_hook::watchThisThread(true);
        call.fill(0.5f);
    });
    Procedure b(device, [](const Call& call) { call.fill(0.25f); });
    a.start();
    b.start();
    ASSERT_EQ(KVXPlatformStartCapture(device, (folder / "x.wav").c_str()), 0);
    const auto some = [&](int more) {
        const int calls = a.calls();
        waitFor([&] { return a.calls() > calls + more; });
    };
    some(20);
    set<Float32>(device, address(kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyScopeOutput, 1), 0.5f);
    some(5);
    // A new slice size requires new cycle buffers.
    set<UInt32>(device, address(kAudioDevicePropertyBufferFrameSize), 100);
    some(5);
    KVXPlatformConfigureDevice(device, 48000, 1, 0);
    some(5);
    KVXPlatformStopCapture(device);
    some(5);
    EXPECT_EQ(count.heapCalls(), 0);
}

TEST(CycleAllocation, IsAbsentWhileProceduresControlEachOther)
{
    const allocator_hook::Count count;
    Device device(Device::paced());
    std::vector<std::unique_ptr<Procedure>> all;
    std::atomic<bool> isDone{false};
    all.push_back(std::make_unique<Procedure>(device, [&](const Call&) {
        allocator_hook::watchThisThread(true);
        const int call = all[0]->calls();
        if (call == 2) all[1]->start();
        if (call == 4) all[1]->stop();
        if (call == 6) all[1]->remove();
        if (call == 8) all[2]->remove(); // a procedure that was never started
        if (call == 10) {
            all[0]->stop();
            all[0]->remove();
            isDone = true;
        }
    }));
    for (int i = 0; i < 2; ++i) all.push_back(std::make_unique<Procedure>(device, [](const Call&) {}));
    all[0]->start();
    waitFor([&] { return isDone.load(); });
    waitFor([&] { return get<UInt32>(device, address(kAudioDevicePropertyDeviceIsRunning)) == 0; });
    EXPECT_EQ(count.heapCalls(), 0);
    EXPECT_GT(all[1]->calls(), 0);
}

TEST(CycleAllocation, IsAbsentOnASteppingThread)
{
    const allocator_hook::Count count;
    Device device;
    Procedure* self = nullptr;
    Procedure procedure(device, [&](const Call& call) {
        call.fill(1);
        if (self->calls() == 50) self->remove();
    });
    self = &procedure;
    procedure.start();
    allocator_hook::watchThisThread(true);
    const uint32_t frames = KVXPlatformStep(device, 100 * 64);
    allocator_hook::watchThisThread(false);
    EXPECT_EQ(frames, 50u * 64);
    EXPECT_EQ(count.heapCalls(), 0);
}

// A lack of memory is simulated at each allocation of the start in turn.
TEST(CaptureMemory, FailedStartIsReportedAndLeavesNoIncompleteFile)
{
    Device device;
    bool wasShort = true;
    for (int passing = 0; wasShort; ++passing) {
        SCOPED_TRACE(passing);
        ASSERT_LT(passing, 1000);
        const support::TemporaryFolder folder;
        const std::string path = folder / "x.wav";
        allocator_hook::failNew(passing, 1);
        const int32_t status = KVXPlatformStartCapture(device, path.c_str());
        wasShort = allocator_hook::stopFailing() > 0;
        EXPECT_EQ(status == 0, !wasShort);
        EXPECT_EQ(std::filesystem::exists(path + ".part"), !wasShort);
        EXPECT_EQ(KVXPlatformStopCapture(device), 0);
    }
}

} // namespace
