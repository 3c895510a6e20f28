// The methods that open, attach, initialise and start an output unit. Each method returns and stores a
// status.
#include "tests/soundstream/stream_fixture.h"

namespace {

using namespace soundstream_test;

class SoundStreamUnit : public StreamTest {
protected:
    HostInteger lastStatus() { return object().data().lastStatus; }
};

TEST_F(SoundStreamUnit, OpensTheDefaultOutputUnit)
{
    HostInteger during = 0;
    spy::script().inEachCall = [&](std::size_t) { during = lastStatus(); };
    const HostInteger opened = object().openUnit();
    spy::name(reinterpret_cast<void*>(opened), "the opened unit");
    EXPECT_NE(opened, 0);
    EXPECT_EQ(lastStatus(), 0);
    EXPECT_EQ(during, -1);
    EXPECT_EQ(spy::calls(), (Notes{"FindNextComponent(null, {'auou', 'def ', 'appl', 0x0, 0x0})",
                                   "OpenAComponent(output1)"}));
    EXPECT_EQ(spy::live(), (Notes{"unit1"})) << "the host program closes it";
    EXPECT_EQ(object().data().attachedUnit, nullptr) << "opening does not attach";
    sound_spy::reset();
}

TEST_F(SoundStreamUnit, ReportsARefusalToOpen)
{
    // clang-format off
    const struct { const char* function; OSStatus status; HostInteger lastStatus; std::size_t calls; const char* why; } facts[] = {
        {"FindNextComponent", 1,            -1,    1, "there is no such component"},
        {"OpenAComponent",    -3000,        -3000, 2, "a status of 16 bits, sign-extended"},
        {"OpenAComponent",    0x10001,      1,     2, "higher bits are cut"},
        {"OpenAComponent",    0x18001,      -32767, 2, "higher bits are cut"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        startOver();
        spy::answer(fact.function).status = fact.status;
        EXPECT_EQ(object().openUnit(), 0);
        EXPECT_EQ(lastStatus(), fact.lastStatus);
        EXPECT_EQ(spy::calls().size(), fact.calls);
    }
}

TEST_F(SoundStreamUnit, AttachSetsTheRenderCallback)
{
    open();
    EXPECT_EQ(object().attach(unit()), 0);
    EXPECT_EQ(object().attach(unit(), 3), 0);
    EXPECT_EQ(object().attach(unit(), -1), 0);
    EXPECT_EQ(spy::calls(),
              (Notes{
                  "AudioUnitSetProperty(unit, 23, scope 1, element 0, {renderFromMixer, the state}, whole)",
                  "AudioUnitSetProperty(unit, 23, scope 1, element 3, {renderFromMixer, the state}, whole)",
                  "AudioUnitSetProperty(unit, 23, scope 1, element 4294967295, {renderFromMixer, the state}, "
                  "whole)",
              }));
    EXPECT_EQ(object().data().attachedUnit, reinterpret_cast<AudioUnit>(unit()));
    EXPECT_EQ(sound_spy::callback().inputProcRefCon, object().state());
    EXPECT_EQ(reinterpret_cast<HostInteger>(object().state()),
              *reinterpret_cast<HostInteger*>(&object().data().state))
        << "the property Handle";
}

TEST_F(SoundStreamUnit, AttachFailsWithoutAState)
{
    EXPECT_EQ(object().attach(unit()), -1);
    EXPECT_EQ(lastStatus(), -1);
    EXPECT_EQ(object().attach(unit(), 1), -1);
    EXPECT_EQ(lastStatus(), -1);
    EXPECT_EQ(object().data().attachedUnit, nullptr);
    EXPECT_EQ(spy::calls(), Notes());
}

TEST_F(SoundStreamUnit, CloseComponentStopsTheUnitAttachedLast)
{
    open();
    char other = 0, third = 0;
    spy::name(&other, "other unit");
    spy::name(&third, "third unit");
    object().attach(unit());
    object().attach(reinterpret_cast<HostInteger>(&other));
    spy::answer("AudioUnitSetProperty").status = -10879;
    EXPECT_EQ(object().attach(reinterpret_cast<HostInteger>(&third)), -10879);
    EXPECT_EQ(lastStatus(), -10879);
    EXPECT_EQ(object().data().attachedUnit, reinterpret_cast<AudioUnit>(&other))
        << "the unit attached last with success";
    spy::forgetCalls();
    object().closeComponent();
    EXPECT_EQ(spy::calls()[0], "AudioOutputUnitStop(other unit)");
}

TEST_F(SoundStreamUnit, InitialisesAndStartsInEveryState)
{
    HostInteger during = 0;
    const auto expectBoth = [&](const char* state) {
        SCOPED_TRACE(state);
        for (const OSStatus status : {0, -50, -10867}) {
            spy::answer("AudioUnitInitialize").status = status;
            spy::answer("AudioOutputUnitStart").status = status;
            spy::forgetCalls();
            spy::script().inEachCall = [&](std::size_t) { during = lastStatus(); };
            EXPECT_EQ(object().initialize(unit()), status);
            EXPECT_EQ(lastStatus(), status);
            EXPECT_EQ(during, -1);
            during = 0;
            EXPECT_EQ(object().start(unit()), status);
            EXPECT_EQ(lastStatus(), status);
            EXPECT_EQ(during, -1);
            EXPECT_EQ(spy::calls(), (Notes{"AudioUnitInitialize(unit)", "AudioOutputUnitStart(unit)"}));
        }
        spy::script().answers.clear();
        spy::script().inEachCall = nullptr;
    };
    expectBoth("new");
    object().initComponent();
    expectBoth("initialised");
    object().openComponent();
    expectBoth("open");
    object().attach(unit());
    expectBoth("attached");
    object().start(unit());
    expectBoth("running");
    object().closeComponent();
    expectBoth("closed");
    object().initComponent();
    expectBoth("initialised again");
    EXPECT_EQ(object().data().attachedUnit, nullptr) << "neither call attaches";
}

TEST_F(SoundStreamUnit, AnExceptionOfThePlatformIsAFailure)
{
    open();
    spy::script().inEachCall = [](std::size_t) { throw Thrown(); };
    object().data().lastStatus = 4711;
    EXPECT_EQ(object().openUnit(), 0);
    EXPECT_EQ(lastStatus(), -1);
    EXPECT_EQ(object().attach(unit()), -1);
    EXPECT_EQ(object().attach(unit(), 2), -1);
    EXPECT_EQ(object().data().attachedUnit, nullptr);
    EXPECT_EQ(object().initialize(unit()), -1);
    EXPECT_EQ(object().start(unit()), -1);
    EXPECT_EQ(lastStatus(), -1);
}

} // namespace
