// Two sides at once, made to meet: one waits inside a call of the platform until the other has come to where
// they could collide.
#include "tests/soundstream/pulled_list.h"
#include "tests/soundstream/stream_test.h"

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

    /// What the mixer gives the converter in that slice: frames; and whether the input was silence.
    struct Slice {
        OSStatus status = -1;
        bool isSilence = false;
    };

    /// A slice in which the mixer calls `completion`, as at the end of a buffer, and then gives `data`.
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
        sound_spy::platform().nextData = [&](SoundComponentDataPtr* place) {
            completion();
            *place = data;
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

// While a slice is under way, nobody frees or closes what it uses: everyone has taken its pointer away by the
// time it ends, and goes on only then.
TEST_F(SoundStreamHazard, WhoeverTakesSomethingAwayWaitsForTheSlice)
{
    using Record = soundstream::RefconRecord;
    const auto isUnheard = [](const Record& record) {
        const auto* const globals = __atomic_load_n(&record.globals, __ATOMIC_SEQ_CST);
        return !globals || __atomic_load_n(&globals->isMixerChanging, __ATOMIC_SEQ_CST);
    };
    const struct {
        const char* what;
        std::function<void()> action;
        const char* firstCallAfterwards;
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
    for (std::size_t turn = 0; turn < 5 * std::size(facts); ++turn) { // chance has a say: more than once each
        const auto& fact = facts[turn % std::size(facts)];
        SCOPED_TRACE(fact.what);
        begin();
        soundstream::StreamState& state = *object().state();
        Record& record = *state.refconRecord;
        soundstream::use(record); // ours, to look at it
        Event isInside;
        std::atomic<bool> isOver{false}, wasOver{false}, hasReturned{false};
        sound_spy::platform().fill = [&](const sound_spy::Filling&) {
            isInside.happen();
            awaitThat([&] {
                if (hasReturned) return true; // it should not have
                return fact.takesTheRecord ? !__atomic_load_n(&state.refconRecord, __ATOMIC_SEQ_CST)
                                           : isUnheard(record);
            });
            for (int yields = 0; yields < 100; ++yields) std::this_thread::yield(); // time to go wrong in
            isOver = true;
            return noErr;
        };
        sound_spy::answer(fact.firstCallAfterwards).during = [&] { wasOver = isOver.load(); };
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

TEST_F(SoundStreamHazard, ASecondUnitThatPullsMeanwhileGetsSilence)
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
        EXPECT_TRUE(pulled.isUntouched(0)) << "the converter's affair";
    });
    isInside.await();
    sound_spy::forgetCalls();
    PulledList pulled(2);
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1));
    EXPECT_EQ(sound_spy::calls(), Notes()) << "the converter is busy";
    mayLeave.happen();
    renderThread.join();
    sound_spy::forgetCalls();
    sound_spy::platform().fill = nullptr;
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_EQ(sound_spy::calls().size(), 1u) << "one at a time";
}

// A thread that renders slice after slice keeps nobody waiting for ever.
TEST_F(SoundStreamHazard, AWaitEndsWithTheSliceThoughOthersFollow)
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

// ---- requests under way ----

TEST_F(SoundStreamHazard, ARequestThatIsUnderWayOutlivesTheInstance)
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
        Event isUnderWay, isClosed;
        sound_spy::answer(fact.function).during = [&] {
            isUnderWay.happen();
            isClosed.await();
        };
        const Handle storage = sound_spy::storageOf(instance());
        std::thread client([&] { EXPECT_EQ(sendWith(storage, fact.what, {0, 'volu', 0}), noErr); });
        isUnderWay.await();
        closeInstance();
        object().destroy();
        isClosed.happen();
        client.join();
    }
}

TEST_F(SoundStreamHazard, AnInstanceThatTwoCloseIsClosedOnce)
{
    begin();
    bool isFirst = true;
    sound_spy::answer("CallComponentFunctionWithStorageProcInfo").during = [&] {
        if (!isFirst) return;
        isFirst = false;
        closeInstance(); // the other one, who comes through first
    };
    const Handle storage = sound_spy::storageOf(instance());
    EXPECT_EQ(sendWith(storage, -2, {reinterpret_cast<long>(instance())}), noErr);
    EXPECT_EQ(sound_spy::live(), (Notes{"component1"}));
}

TEST_F(SoundStreamHazard, AnInstanceClosedWhileItsMixerOpensKeepsNoMixer)
{
    begin();
    Event isUnderWay, isClosed;
    sound_spy::answer("OpenMixerSoundComponent").during = [&] {
        isUnderWay.happen();
        isClosed.await();
    };
    const Handle storage = sound_spy::storageOf(instance());
    std::thread client([&] { EXPECT_EQ(sendWith(storage, 1, {0}), noErr); });
    isUnderWay.await();
    EXPECT_EQ(sendWith(storage, 1, {0}), channelBusy) << "it is being initialised";
    closeInstance();
    isClosed.happen();
    client.join();
    EXPECT_EQ(sound_spy::live(), (Notes{"component1"}));
    PulledList pulled(2);
    EXPECT_EQ(render(pulled.list()), noErr);
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1)) << "and is not heard again";
}

TEST_F(SoundStreamHazard, AnInstanceIsSilentWhileItsMixerChanges)
{
    begin();
    PulledList pulled(2);
    sound_spy::answer("OpenMixerSoundComponent").during = [&] { EXPECT_EQ(render(pulled.list()), noErr); };
    send(instance(), 1, {0});
    EXPECT_TRUE(pulled.isSilent(0) && pulled.isSilent(1));
    sound_spy::forgetCalls();
    render(pulled.list());
    EXPECT_EQ(sound_spy::calls().size(), 1u) << "and heard again then";
}

// ---- on the render thread itself: a completion routine does what it likes ----

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
        {"closes all, the other way",    [this] { object().closeComponent(); closeInstance(); },       true},
        {"destroys all",                 [this] { closeInstance(); object().destroy(); },              true},
        {"destroys all, the other way",  [this] { object().destroy(); closeInstance(); },              true},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.what);
        begin();
        Byte samples[64] = {};
        // The mixer's own: it goes with the mixer.
        auto data = std::make_unique<SoundComponentData>(
            SoundComponentData{0, 'sowt', 2, 16, 0xAC440000, 16, samples, 0});
        sound_spy::answer("CloseMixerSoundComponent").during = [&] { data->sampleCount = 0x7FFFFFFF; };
        const Slice slice = renderWith(fact.action, data.get());
        EXPECT_EQ(slice.status, noErr);
        EXPECT_EQ(slice.isSilence, fact.isSilence) << "nothing of a mixer that is closed is used";
        data.reset();
        if (!fact.isSilence) continue;
        Byte others[64] = {};
        SoundComponentData other = {0, 'sowt', 2, 16, 0xAC440000, 16, others, 0};
        renderWith([] {}, &other); // the next slice, of whatever there is now
    }
}

TEST_F(SoundStreamHazard, AnInstanceOutlivesTheObjectAndItsRegistration)
{
    begin();
    const ComponentInstance second = openInstanceWithMixer();
    object().closeComponent();
    object().openComponent(); // another registration
    const ComponentInstance third = openInstanceWithMixer();
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(third));
    closeInstance();
    EXPECT_EQ(object().state()->refconRecord->globals, globalsOf(third)) << "of the registration before";
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
