// Two threads at the points where they could collide. One thread waits inside a platform call until the other
// thread has reached its own point.
#include "tests/soundstream/pulled_list.h"
#include "tests/soundstream/stream_fixture.h"
#include "tests/support/c_library_spy.h"

#include <atomic>
#include <iterator>
#include <memory>
#include <thread>

namespace {

using namespace soundstream_test;

class SoundStreamHazard : public StreamTest {
protected:
    void begin()
    {
        startOver();
        open();
        object().attach(unit());
        callback_ = sound_spy::callback();
        instance_ = openInstanceWithMixer();
    }

    ComponentInstance instance() const { return instance_; }
    void closeInstance() { StreamTest::closeInstance(instance_); }

    OSStatus render(AudioBufferList* list)
    {
        return callback_.inputProc(callback_.inputProcRefCon, nullptr, nullptr, 0, 8, list);
    }

    struct Slice {
        OSStatus status = -1;
        bool isSilence = false; ///< whether the converter's input was silent
    };

    /// Render a slice in which the mixer first calls `completion`, as it does at the end of a buffer, and
    /// then delivers `data`.
    Slice renderWith(const std::function<void()>& completion, SoundComponentDataPtr data)
    {
        Slice slice;
        PulledList pulled(2);
        sound_spy::platform().fill = [&](const sound_spy::Filling& filling) {
            PulledList input(1);
            UInt32 packets = 8;
            filling.input(filling.converter, &packets, input.list(), nullptr, filling.client);
            slice.isSilence = input.isSilent(0);
            return noErr;
        };
        sound_spy::platform().nextData = [&](SoundComponentDataPtr* out) {
            completion();
            *out = data;
        };
        slice.status = render(pulled.list());
        sound_spy::platform().fill = nullptr;
        sound_spy::platform().nextData = nullptr;
        return slice;
    }

private:
    AURenderCallbackStruct callback_ = {};
    ComponentInstance instance_ = nullptr;
};

struct Event {
    std::atomic<bool> hasHappened{false};
    void happen() { hasHappened = true; }
    void await() const
    {
        while (!hasHappened) std::this_thread::yield();
    }
};

template <class Condition>
void awaitThat(Condition condition)
{
    while (!condition()) std::this_thread::yield();
}

// Each action makes the instance invisible to the render thread, then waits for the render call in progress.
TEST_F(SoundStreamHazard, ClosingAndReplacingWaitForTheRenderCallInProgress)
{
    using Record = soundstream::RefconRecord;
    const auto isSilent = [](const Record& record) {
        const auto* const globals = __atomic_load_n(&record.globals, __ATOMIC_SEQ_CST);
        return !globals || __atomic_load_n(&globals->isMixerChanging, __ATOMIC_SEQ_CST);
    };
    const struct {
        const char* what;
        std::function<void()> action;
        const char* firstCallAfterTheWait;
        bool takesTheRecord;
    } facts[] = {
        {"the client closes", [this] { closeInstance(); }, "CloseMixerSoundComponent", false},
        {"the client initialises again", [this] { send(instance(), 1, {0}); }, "CloseMixerSoundComponent",
         false},
        {"the client opens again", [this] { send(instance(), -1, {reinterpret_cast<long>(instance())}); },
         "CloseMixerSoundComponent", false},
        {"the host closes", [this] { object().closeComponent(); }, "UnregisterComponent", true},
        {"the host initialises again", [this] { object().initComponent(); }, "UnregisterComponent", true},
        {"the host destroys", [this] { object().destroy(); }, "UnregisterComponent", true},
    };
    for (std::size_t round = 0; round < 5 * std::size(facts);
         ++round) { // each action runs several times, because threads interleave differently
        const auto& fact = facts[round % std::size(facts)];
        SCOPED_TRACE(fact.what);
        begin();
        soundstream::StreamState& state = *object().state();
        Record& record = *state.refconRecord;
        // The added user lets the test read the record after the sound bridge has left it.
        soundstream::use(record);
        Event isInside;
        std::atomic<bool> isOver{false}, wasOver{false}, hasReturned{false};
        sound_spy::platform().fill = [&](const sound_spy::Filling&) {
            isInside.happen();
            awaitThat([&] {
                if (hasReturned) return true; // the action has returned too early, so the test fails below
                return fact.takesTheRecord ? !__atomic_load_n(&state.refconRecord, __ATOMIC_SEQ_CST)
                                           : isSilent(record);
            });
            // During these yields an action that fails to wait would continue.
            for (int yields = 0; yields < 100; ++yields) std::this_thread::yield();
            isOver = true;
            return noErr;
        };
        spy::answer(fact.firstCallAfterTheWait).during = [&] { wasOver = isOver.load(); };
        std::thread renderThread([this] {
            PulledList pulled(2);
            EXPECT_EQ(render(pulled.list()), noErr);
        });
        isInside.await();
        fact.action();
        hasReturned = true;
        EXPECT_TRUE(wasOver) << "it did not wait";
        renderThread.join();
        soundstream::leave(&record);
    }
}

// The render call lasts until the waiting thread has slept, so that this thread goes through both stages of
// its wait: first it yields, later it sleeps.
TEST_F(SoundStreamHazard, WaitingMakesNoPlatformCall)
{
    const std::string call =
        "CallComponentFunctionWithStorageProcInfo(storage1, the request, a handler, 0x3F0)";
    const Notes closing = {"AudioOutputUnitStop(unit)", "CountComponentInstances(component1)",
                           "UnregisterComponent(component1)"};
    const struct {
        const char* what;
        std::function<void()> action;
        Notes calls;
    } facts[] = {
        {"the client closes", [this] { closeInstance(); }, {call, "CloseMixerSoundComponent(mixer1)"}},
        {"the client initialises again",
         [this] { send(instance(), 1, {0}); },
         {call, "CloseMixerSoundComponent(mixer1)",
          "OpenMixerSoundComponent({0, 'sowt', 2, 16, 0xAC440000, 1024, null, 0}, 0)"}},
        {"the host closes", [this] { object().closeComponent(); }, closing},
        {"the host destroys", [this] { object().destroy(); }, closing},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.what);
        begin();
        Event isInside;
        sound_spy::platform().fill = [&](const sound_spy::Filling&) {
            isInside.happen();
            awaitThat([] { return sound_spy::sleeps() > 2; });
            return noErr;
        };
        std::thread renderThread([this] {
            PulledList pulled(2);
            EXPECT_EQ(render(pulled.list()), noErr);
        });
        isInside.await();
        spy::forgetCalls();
        fact.action();
        EXPECT_EQ(spy::calls(), fact.calls);
        renderThread.join();
    }
}

TEST_F(SoundStreamHazard, ASecondUnitRendersSilenceWhileTheFirstRenders)
{
    begin();
    Event isInside, mayLeave;
    sound_spy::platform().fill = [&](const sound_spy::Filling&) {
        isInside.happen();
        mayLeave.await();
        return noErr;
    };
    std::thread renderThread([this] {
        PulledList pulled(2);
        EXPECT_EQ(render(pulled.list()), noErr);
        EXPECT_TRUE(pulled.isUntouched(0)) << "the spy's converter writes nothing";
    });
    isInside.await();
    spy::forgetCalls();
    PulledList pulled(2);
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1));
    EXPECT_EQ(spy::calls(), Notes()) << "the converter is in use";
    mayLeave.happen();
    renderThread.join();
    spy::forgetCalls();
    sound_spy::platform().fill = nullptr;
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_EQ(spy::calls().size(), 1u) << "the second unit renders afterwards";
}

// A thread that renders without a pause does not delay a waiting thread for ever.
TEST_F(SoundStreamHazard, CloseDuringRenderCallsReturnsWithoutHanging)
{
    begin();
    std::atomic<bool> isDone{false};
    std::thread renderThread([&] {
        PulledList pulled(2);
        while (!isDone) render(pulled.list());
    });
    for (int time = 0; time < 200; ++time) send(instance(), 1, {0});
    closeInstance();
    object().closeComponent();
    isDone = true;
    renderThread.join();
}

// ---- requests in progress ----

TEST_F(SoundStreamHazard, ARequestInProgressOutlivesItsInstance)
{
    // clang-format off
    const struct { SInt16 what; const char* function; } facts[] = {
        {259, "SoundComponentGetInfo"},     {260, "SoundComponentSetInfo"},
        {261, "SoundComponentStartSource"}, {262, "SoundComponentStopSource"},
        {263, "SoundComponentPauseSource"}, {264, "SoundComponentPlaySourceBuffer"},
        {300, "DelegateComponentCall"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.function);
        begin();
        Event isInProgress, isClosed;
        spy::answer(fact.function).during = [&] {
            isInProgress.happen();
            isClosed.await();
        };
        const Handle storage = sound_spy::storageOf(instance());
        std::thread client([&] { EXPECT_EQ(sendWith(storage, fact.what, {0, 'volu', 0}), noErr); });
        isInProgress.await();
        closeInstance();
        object().destroy();
        isClosed.happen();
        client.join();
    }
}

TEST_F(SoundStreamHazard, AnInstanceClosedByTwoThreadsIsClosedOnce)
{
    begin();
    bool isFirst = true;
    spy::answer("CallComponentFunctionWithStorageProcInfo").during = [&] {
        if (!isFirst) return;
        isFirst = false;
        closeInstance(); // a second close of the same instance, which finishes before the first
    };
    const Handle storage = sound_spy::storageOf(instance());
    EXPECT_EQ(sendWith(storage, -2, {reinterpret_cast<long>(instance())}), noErr);
    EXPECT_EQ(spy::live(), (Notes{"component1"}));
}

TEST_F(SoundStreamHazard, AnInstanceClosedWhileItsMixerOpensLeaksNoMixer)
{
    begin();
    Event isInProgress, isClosed;
    spy::answer("OpenMixerSoundComponent").during = [&] {
        isInProgress.happen();
        isClosed.await();
    };
    const Handle storage = sound_spy::storageOf(instance());
    std::thread client([&] { EXPECT_EQ(sendWith(storage, 1, {0}), noErr); });
    isInProgress.await();
    EXPECT_EQ(sendWith(storage, 1, {0}), channelBusy) << "another thread initialises it";
    closeInstance();
    isClosed.happen();
    client.join();
    EXPECT_EQ(spy::live(), (Notes{"component1"}));
    PulledList pulled(2);
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1)) << "the instance stays silent";
}

TEST_F(SoundStreamHazard, AnInstanceIsSilentWhileItsMixerChanges)
{
    begin();
    PulledList pulled(2);
    spy::answer("OpenMixerSoundComponent").during = [&] { EXPECT_EQ(render(pulled.list()), noErr); };
    send(instance(), 1, {0});
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1));
    spy::forgetCalls();
    render(pulled.list());
    EXPECT_EQ(spy::calls().size(), 1u) << "audible again afterwards";
}

// ---- completion routines, on the render thread ----

TEST_F(SoundStreamHazard, ACompletionRoutineMayCloseInitialiseOrDestroy)
{
    // clang-format off
    const struct { const char* what; std::function<void()> action; bool isSilence; } facts[] = {
        {"nothing",                      [] {},                                                        false},
        {"starts a source",              [this] { send(instance(), 261, {0, 0}); },                    false},
        {"closes the instance",          [this] { closeInstance(); },                                  true},
        {"opens it again",               [this] { send(instance(), -1, {reinterpret_cast<long>(instance())}); }, true},
        {"initialises it again",         [this] { send(instance(), 1, {0}); },                         true},
        {"closes the component",         [this] { object().closeComponent(); },                        false},
        {"opens the component again",    [this] { object().closeComponent(); object().openComponent(); }, false},
        {"initialises the component",    [this] { object().initComponent(); },                         false},
        {"destroys the object",          [this] { object().destroy(); },                               false},
        {"closes all",                   [this] { closeInstance(); object().closeComponent(); },       true},
        {"closes all, component first",    [this] { object().closeComponent(); closeInstance(); },       true},
        {"destroys all",                 [this] { closeInstance(); object().destroy(); },              true},
        {"destroys all, object first",  [this] { object().destroy(); closeInstance(); },              true},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.what);
        begin();
        Byte samples[64] = {};
        // The SoundComponentData belongs to the mixer and is invalid after the mixer is closed.
        auto data = std::make_unique<SoundComponentData>(
            SoundComponentData{0, 'sowt', 2, 16, 0xAC440000, 16, samples, 0});
        spy::answer("CloseMixerSoundComponent").during = [&] { data->sampleCount = 0x7FFFFFFF; };
        const Slice slice = renderWith(fact.action, data.get());
        EXPECT_EQ(slice.status, noErr);
        EXPECT_EQ(slice.isSilence, fact.isSilence) << "samples of a closed instance or mixer are not used";
        data.reset();
        if (!fact.isSilence) continue;
        Byte others[64] = {};
        SoundComponentData other = {0, 'sowt', 2, 16, 0xAC440000, 16, others, 0};
        renderWith([] {}, &other); // render the next slice, in the new state
    }
}

// The mixer has called the completion routine and is still on the call stack. Therefore it is closed only
// after the converter has returned.
TEST_F(SoundStreamHazard, ACloseInsideTheRenderCallTakesEffectAtItsEnd)
{
    begin();
    bool hasRendered = false;
    PulledList pulled(2);
    sound_spy::platform().fill = [&](const sound_spy::Filling& filling) {
        PulledList input(1);
        UInt32 packets = 8;
        filling.input(filling.converter, &packets, input.list(), nullptr, filling.client);
        EXPECT_TRUE(input.isSilent(0));
        hasRendered = true;
        return noErr;
    };
    sound_spy::platform().nextData = [this](SoundComponentDataPtr*) {
        spy::forgetCalls();
        closeInstance();
        EXPECT_EQ(
            spy::calls(),
            (Notes{"CallComponentFunctionWithStorageProcInfo(storage1, the request, a handler, 0x3F0)"}));
    };
    spy::answer("CloseMixerSoundComponent").during = [&] { EXPECT_TRUE(hasRendered); };
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_EQ(spy::calls().back(), "CloseMixerSoundComponent(mixer1)");
    EXPECT_EQ(c_library_spy::liveBlocks(), 2) << "the state and its refcon record";
}

TEST_F(SoundStreamHazard, AnInstanceOutlivesTheObjectAndItsRegistration)
{
    begin();
    const ComponentInstance second = openInstanceWithMixer();
    object().closeComponent();
    object().openComponent(); // the component is registered a second time
    const ComponentInstance third = openInstanceWithMixer();
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(third));
    closeInstance();
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(third))
        << "it belonged to the former registration";
    send(second, 1, {0});
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(third));
    object().destroy();
    for (const ComponentInstance instance : {second, third}) {
        EXPECT_EQ(send(instance, 261, {0, 0}), noErr);
        EXPECT_EQ(send(instance, 1, {0}), noErr);
        StreamTest::closeInstance(instance);
    }
    PulledList pulled(2);
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1));
}

} // namespace
