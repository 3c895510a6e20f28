// A cycle allocates nothing, whatever its procedures do there but adding others.
#include "tests/platform/hal/alarm.h"
#include "tests/platform/hal/bench.h"
#include "tests/support/temporary_folder.h"

#include <memory>

namespace {

using namespace bench;

/// What a cycle does is watched from its first procedure's call on, on that thread, to the end of the test:
/// the mixing behind it, the waiting for the next slice, and all cycles that follow.
struct Quiet {
    Quiet() { watch::reset(); }
    ~Quiet() { watch::disarm(); }
};

TEST(Alarm, RingsWhenAProcedureAllocates)
{
    Quiet quiet;
    Device device(Device::paced());
    std::atomic<bool> isDone{false};
    std::unique_ptr<int> block;
    Procedure procedure(device, [&](const Call&) {
        if (isDone) return;
        watch::armThisThread();
        block = std::make_unique<int>(1);
        isDone = true;
    });
    procedure.start();
    waitFor([&] { return isDone.load(); });
    EXPECT_GE(watch::rings(), 1);
}

TEST(Alarm, IsSilentWhileADevicePlays)
{
    support::TemporaryFolder folder;
    Quiet quiet;
    Device device(Device::paced());
    Procedure a(device, [](const Call& call) {
        watch::armThisThread();
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
    set<UInt32>(device, address(kAudioDevicePropertyBufferFrameSize), 100); // another shape is taken up
    some(5);
    KVXPlatformConfigureDevice(device, 48000, 1, 0);
    some(5);
    KVXPlatformStopCapture(device);
    some(5);
    EXPECT_EQ(watch::rings(), 0);
}

TEST(Alarm, IsSilentWhileProceduresStopAndStartAndRemoveOneAnother)
{
    Quiet quiet;
    Device device(Device::paced());
    std::vector<std::unique_ptr<Procedure>> all;
    std::atomic<bool> isDone{false};
    all.push_back(std::make_unique<Procedure>(device, [&](const Call&) {
        watch::armThisThread();
        const int call = all[0]->calls();
        if (call == 2) all[1]->start();
        if (call == 4) all[1]->stop();
        if (call == 6) all[1]->remove();
        if (call == 8) all[2]->remove(); // never started
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
    EXPECT_EQ(watch::rings(), 0);
    EXPECT_GT(all[1]->calls(), 0);
}

TEST(Alarm, IsSilentOnAStepsThreadToo)
{
    Quiet quiet;
    Device device;
    Procedure* self = nullptr;
    Procedure procedure(device, [&](const Call& call) {
        call.fill(1);
        if (self->calls() == 50) self->remove();
    });
    self = &procedure;
    procedure.start();
    watch::armThisThread();
    const uint32_t frames = KVXPlatformStep(device, 100 * 64);
    watch::disarm();
    EXPECT_EQ(frames, 50u * 64);
    EXPECT_EQ(watch::rings(), 0);
}

} // namespace
