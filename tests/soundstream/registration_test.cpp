// The platform calls of an object's InitComponent, OpenComponent, CloseComponent and destruction, and the
// properties in each state.
#include "tests/soundstream/stream_fixture.h"
#include "tests/support/c_library_spy.h"

#include <cstring>

namespace {

using namespace soundstream_test;

const Notes opening = {
    "CopyCStringToPascal(\"QTSoundStream\")",
    "NewString(\"QTSoundStream\")",
    "RegisterComponent({'sdev', 'QTso', 'QTso', 0xC0C, 0x0}, the dispatcher, 0, handle1, null, null)",
    "DisposeHandle(handle1)",
    "SetComponentRefcon(component1, refcon1)",
    "AudioConverterNew({44100, 'lpcm', 0xE, 4, 1, 4, 2, 16, 0}, {44100, 'lpcm', 0x29, 4, 1, 4, 2, 32, 0})",
};

const Notes closing = {
    "CountComponentInstances(component1)",
    "UnregisterComponent(component1)",
};

/// The platform calls that `action` makes, in order.
template <class Action>
Notes callsOf(Action action)
{
    spy::forgetCalls();
    action();
    return spy::calls();
}

class SoundStreamComponent : public StreamTest {};

// ---- InitComponent ----

TEST_F(SoundStreamComponent, InitComponentCallsNoPlatformFunction)
{
    EXPECT_EQ(callsOf([&] { object().initComponent(); }), Notes());
    const soundstream::StreamState* const state = object().state();
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(object().data().ownsState, true);
    EXPECT_EQ(object().data().attachedUnit, nullptr);
    EXPECT_EQ(object().data().lastStatus, 0);

    EXPECT_EQ(state->component, nullptr);
    EXPECT_EQ(state->converter, nullptr);
    EXPECT_EQ(state->refconRecord, nullptr);
    EXPECT_EQ(state->streamActive, 0);
    EXPECT_EQ(state->postsStatusNotifications, 0);

    const AudioStreamBasicDescription& format = state->outputFormat;
    EXPECT_EQ(format.mSampleRate, 44100.0);
    EXPECT_EQ(format.mFormatID, 0x6C70636Du);
    EXPECT_EQ(format.mFormatFlags, 41u);
    EXPECT_EQ(format.mBytesPerPacket, 4u);
    EXPECT_EQ(format.mFramesPerPacket, 1u);
    EXPECT_EQ(format.mBytesPerFrame, 4u);
    EXPECT_EQ(format.mChannelsPerFrame, 2u);
    EXPECT_EQ(format.mBitsPerChannel, 32u);
    EXPECT_EQ(format.mReserved, 0u);
}

TEST_F(SoundStreamComponent, InitComponentTearsDownTheFormerState)
{
    open();
    ASSERT_EQ(object().attach(unit()), 0);
    members.set<HostBoolean>(object().get(), "PostsStatusNotifications", true);
    const long blocks = c_library_spy::liveBlocks();
    EXPECT_EQ(callsOf([&] { object().initComponent(); }), (Notes{
                                                              "AudioOutputUnitStop(unit)",
                                                              "CountComponentInstances(component1)",
                                                              "UnregisterComponent(component1)",
                                                          }));
    EXPECT_EQ(c_library_spy::liveBlocks(), blocks - 1)
        << "a state replaces a state, and the refcon record is freed";
    EXPECT_FALSE(object().isOpen());
    EXPECT_EQ(object().state()->converter, nullptr) << "the converter belonged to the former state";
    EXPECT_EQ(members.get<HostBoolean>(object().get(), "PostsStatusNotifications"), false);
    EXPECT_EQ(object().data().attachedUnit, nullptr);
    EXPECT_EQ(callsOf([&] { object().initComponent(); }), Notes()) << "nothing is open any more";

    Notes again = opening;
    for (std::string& call : again)
        for (const char* each : {"handle1", "component1", "refcon1"})
            if (const auto at = call.find(each); at != call.npos)
                call.replace(at + std::strlen(each) - 1, 1, "2");
    EXPECT_EQ(callsOf([&] { object().openComponent(); }), again) << "with a new converter";
}

TEST_F(SoundStreamComponent, HasNoStateWithoutMemory)
{
    open();
    c_library_spy::refuseCalloc(1);
    EXPECT_EQ(callsOf([&] { object().initComponent(); }), closing) << "the former state is torn down anyway";
    EXPECT_EQ(object().state(), nullptr);
    EXPECT_EQ(object().data().ownsState, false);
    EXPECT_EQ(callsOf([&] { object().openComponent(); }), Notes());
    EXPECT_EQ(object().attach(unit()), -1);
    object().initComponent();
    EXPECT_NE(object().state(), nullptr);
}

// ---- OpenComponent ----

TEST_F(SoundStreamComponent, OpenComponentRegistersAndCreatesTheConverter)
{
    object().initComponent();
    EXPECT_FALSE(object().isOpen());
    EXPECT_EQ(callsOf([&] { object().openComponent(); }), opening);
    EXPECT_TRUE(object().isOpen());

    const sound_spy::Registration registration = sound_spy::lastRegistration();
    EXPECT_EQ(registration.description.componentType, 0x73646576u);
    EXPECT_EQ(registration.description.componentSubType, 0x5154736Fu);
    EXPECT_EQ(registration.description.componentManufacturer, 0x5154736Fu);
    EXPECT_EQ(registration.entry, dispatcher());
    EXPECT_EQ(registration.name, "\x0DQTSoundStream") << "a Pascal string";

    const soundstream::StreamState& state = *object().state();
    ASSERT_NE(state.refconRecord, nullptr);
    EXPECT_EQ(state.refconRecord->state, &state);
    EXPECT_EQ(state.refconRecord->globals, nullptr);
    EXPECT_EQ(sound_spy::refconOf(state.component), reinterpret_cast<long>(state.refconRecord));
    EXPECT_EQ(members.get<HostInteger>(object().get(), "SoundOutputComponentHandle"),
              reinterpret_cast<HostInteger>(state.component));
}

TEST_F(SoundStreamComponent, ASecondOpenComponentDoesNothing)
{
    open();
    EXPECT_EQ(callsOf([&] { object().openComponent(); }), Notes());
    EXPECT_TRUE(object().isOpen());
}

TEST_F(SoundStreamComponent, OpenComponentWithoutAStateDoesNothing)
{
    EXPECT_EQ(callsOf([&] { object().openComponent(); }), Notes());
    EXPECT_FALSE(object().isOpen());
}

TEST_F(SoundStreamComponent, OpenedAgainKeepsTheConverter)
{
    open();
    const AudioConverterRef converter = object().state()->converter;
    object().closeComponent();
    EXPECT_EQ(
        callsOf([&] { object().openComponent(); }),
        (Notes{
            "CopyCStringToPascal(\"QTSoundStream\")",
            "NewString(\"QTSoundStream\")",
            "RegisterComponent({'sdev', 'QTso', 'QTso', 0xC0C, 0x0}, the dispatcher, 0, handle2, null, null)",
            "DisposeHandle(handle2)",
            "SetComponentRefcon(component2, refcon2)",
        }));
    EXPECT_EQ(object().state()->converter, converter);
}

TEST_F(SoundStreamComponent, HasNoEntryPointInTheDevelopmentEnvironment)
{
    soundComponentEntry = nullptr;
    object().initComponent();
    Notes expected = opening;
    expected[2] = "RegisterComponent({'sdev', 'QTso', 'QTso', 0xC0C, 0x0}, null, 0, handle1, null, null)";
    EXPECT_EQ(callsOf([&] { object().openComponent(); }), expected);
    EXPECT_TRUE(object().isOpen());
}

// A refused platform call is not reported; a later OpenComponent repeats only the refused step.
TEST_F(SoundStreamComponent, OpenComponentContinuesAfterARefusal)
{
    // clang-format off
    const struct { const char* function; std::size_t calls; bool isOpen, hasConverter; const char* why; } facts[] = {
        {"NewString",          5, true,  true,  "the component has no name, and no handle is disposed"},
        {"RegisterComponent",  6, false, true,  "the other steps happen anyway"},
        {"AudioConverterNew",  6, true,  false, "and the garbage result is not stored"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.function);
        startOver();
        object().initComponent();
        spy::answer(fact.function).status = -108;
        const Notes calls = callsOf([&] { object().openComponent(); });
        EXPECT_EQ(calls.size(), fact.calls);
        EXPECT_EQ(object().isOpen(), fact.isOpen) << fact.why;
        EXPECT_EQ(object().state()->converter != nullptr, fact.hasConverter) << fact.why;
        EXPECT_NE(object().state()->refconRecord, nullptr);

        spy::answer(fact.function).status = noErr;
        object().openComponent();
        EXPECT_TRUE(object().isOpen());
        object().closeComponent();
        object().openComponent();
        EXPECT_NE(object().state()->converter, nullptr) << "created by the next OpenComponent";
        EXPECT_EQ(object().state()->refconRecord->globals, nullptr);
    }
}

TEST_F(SoundStreamComponent, ARegistrationThatFailsTwiceLeaksNothing)
{
    object().initComponent();
    spy::answer("RegisterComponent").status = -108;
    object().openComponent();
    const long blocks = c_library_spy::liveBlocks();
    EXPECT_EQ(
        callsOf([&] { object().openComponent(); }),
        (Notes{
            "CopyCStringToPascal(\"QTSoundStream\")",
            "NewString(\"QTSoundStream\")",
            "RegisterComponent({'sdev', 'QTso', 'QTso', 0xC0C, 0x0}, the dispatcher, 0, handle2, null, null)",
            "DisposeHandle(handle2)",
            "SetComponentRefcon(null, refcon2)",
        }));
    EXPECT_EQ(c_library_spy::liveBlocks(), blocks);
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), Notes()) << "it is not open";
    EXPECT_EQ(callsOf([&] { object().destroy(); }), Notes());
}

TEST_F(SoundStreamComponent, IsOpenAndSilentWithoutMemoryForTheRefconRecord)
{
    object().initComponent();
    c_library_spy::refuseCalloc(1);
    Notes expected = opening;
    expected[4] = "SetComponentRefcon(component1, null)";
    EXPECT_EQ(callsOf([&] { object().openComponent(); }), expected);
    EXPECT_TRUE(object().isOpen());
    EXPECT_EQ(object().state()->refconRecord, nullptr);

    const ComponentInstance instance = openInstanceWithMixer();
    EXPECT_EQ(globalsOf(instance)->refcon, nullptr);
    EXPECT_EQ(send(instance, 261, {0, 0}), noErr);
    EXPECT_FALSE(object().isActive()) << "the instance has no state to set active";
    EXPECT_EQ(send(instance, 262, {0, 0}), noErr);
    closeInstance(instance);
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), closing);
}

// ---- CloseComponent ----

TEST_F(SoundStreamComponent, CloseComponentUnregisters)
{
    open();
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), closing);
    EXPECT_FALSE(object().isOpen());
    EXPECT_EQ(object().state()->component, nullptr);
    EXPECT_EQ(object().state()->refconRecord, nullptr);
    EXPECT_NE(object().state()->converter, nullptr) << "the converter is kept";
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), Notes()) << "a second call does nothing";
}

TEST_F(SoundStreamComponent, CloseComponentStopsTheAttachedUnitFirst)
{
    open();
    ASSERT_EQ(object().attach(unit()), 0);
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), (Notes{
                                                               "AudioOutputUnitStop(unit)",
                                                               "CountComponentInstances(component1)",
                                                               "UnregisterComponent(component1)",
                                                           }));
    EXPECT_EQ(object().data().attachedUnit, nullptr);
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), Notes()) << "the unit is forgotten";
}

TEST_F(SoundStreamComponent, CloseComponentStopsAnAttachedUnitWhileNotOpen)
{
    object().initComponent();
    ASSERT_EQ(object().attach(unit()), 0);
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), (Notes{"AudioOutputUnitStop(unit)"}));
}

TEST_F(SoundStreamComponent, CloseComponentWithoutAStateDoesNothing)
{
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), Notes());
}

TEST_F(SoundStreamComponent, CloseComponentContinuesAfterARefusal)
{
    for (const std::string function : {"AudioOutputUnitStop", "UnregisterComponent"}) {
        SCOPED_TRACE(function);
        startOver();
        open();
        object().attach(unit());
        const Component component = object().state()->component;
        spy::answer(function).status = -3001;
        EXPECT_EQ(callsOf([&] { object().closeComponent(); }).size(), 3u);
        EXPECT_FALSE(object().isOpen());
        EXPECT_EQ(object().data().attachedUnit, nullptr);
        spy::answer(function).status = noErr;
        // The refused call has left the component registered.
        if (function == "UnregisterComponent") UnregisterComponent(component);
    }
}

TEST_F(SoundStreamComponent, CloseComponentKeepsOpenInstancesValid)
{
    open();
    const ComponentInstance first = openInstanceWithMixer(), second = openInstanceWithMixer();
    EXPECT_EQ(callsOf([&] { object().closeComponent(); }), closing) << "it does not wait for them";
    EXPECT_FALSE(object().isOpen());

    EXPECT_EQ(send(first, 261, {0, 0}), noErr) << "they answer requests";
    EXPECT_TRUE(object().isActive());
    EXPECT_EQ(callsOf([&] { closeInstance(second); }),
              (Notes{"CallComponentFunctionWithStorageProcInfo(storage2, the request, a handler, 0x3F0)",
                     "CloseMixerSoundComponent(mixer2)"}));
    EXPECT_FALSE(object().isActive());
    object().destroy();
    EXPECT_EQ(send(first, 261, {0, 0}), noErr) << "also when the object is destroyed";
    closeInstance(first);
}

// ---- destruction ----

TEST_F(SoundStreamComponent, DestructionClosesAndFreesTheState)
{
    open();
    object().attach(unit());
    EXPECT_EQ(callsOf([&] { object().destroy(); }), (Notes{
                                                        "AudioOutputUnitStop(unit)",
                                                        "CountComponentInstances(component1)",
                                                        "UnregisterComponent(component1)",
                                                    }));
    EXPECT_EQ(object().state(), nullptr);
    EXPECT_EQ(object().data().ownsState, false);
}

TEST_F(SoundStreamComponent, ASecondDestructionDoesNothing)
{
    open();
    object().destroy();
    EXPECT_EQ(callsOf([&] { soundstream::destruct(object().get()); }), Notes());
}

TEST_F(SoundStreamComponent, DestructionKeepsAStateThatTheObjectDoesNotOwn)
{
    open();
    soundstream::StreamState* const state = object().state();
    members.set<HostBoolean>(object().get(), "PostsStatusNotifications", true);
    object().data().ownsState = false; // equivalent to a host program that sets the property "Release"
    object().destroy();
    EXPECT_EQ(object().state(), nullptr);
    EXPECT_EQ(state->postsStatusNotifications, 1) << "the state is not freed";
    soundstream::liveStates.remove(*state);
    soundstream::leave(state);
}

TEST_F(SoundStreamComponent, TwoObjectsMayShareAStateByItsHandle)
{
    open();
    StreamObject other;
    other.data().state = object().state(); // equivalent to a host program that sets the property "Handle"
    EXPECT_TRUE(other.isOpen());
    other.openComponent();
    EXPECT_EQ(spy::calls(), Notes()) << "the shared state is open";
    other.closeComponent();
    EXPECT_EQ(spy::calls(), closing);
    EXPECT_FALSE(object().isOpen());
    other.destroy();
    EXPECT_NE(object().state(), nullptr);
    object().openComponent();
    EXPECT_TRUE(object().isOpen());
    EXPECT_TRUE(other.isUntouchedAround());
}

// ---- properties ----

TEST_F(SoundStreamComponent, PropertiesFollowEveryState)
{
    const auto expect = [&](bool posts, bool isActive, bool isOpen) {
        EXPECT_EQ(members.get<HostBoolean>(object().get(), "PostsStatusNotifications"), posts);
        EXPECT_EQ(members.get<HostBoolean>(object().get(), "IsStreamActive"), isActive);
        EXPECT_EQ(members.get<HostBoolean>(object().get(), "IsOpen"), isOpen);
        EXPECT_EQ(members.get<HostInteger>(object().get(), "SoundOutputComponentHandle") != 0, isOpen);
    };
    members.set<HostBoolean>(object().get(), "PostsStatusNotifications", true);
    expect(false, false, false); // a value is ignored while the object has no state

    object().initComponent();
    expect(false, false, false);
    members.set<HostBoolean>(object().get(), "PostsStatusNotifications", true);
    expect(true, false, false);

    object().openComponent();
    expect(true, false, true);
    const ComponentInstance instance = openInstanceWithMixer();
    send(instance, 261, {0, 0});
    expect(true, true, true);
    object().closeComponent();
    expect(true, true, false);
    closeInstance(instance);
    expect(true, false, false);
    members.set<HostBoolean>(object().get(), "PostsStatusNotifications", false);
    expect(false, false, false);
    EXPECT_EQ(spy::calls().back(), "CloseMixerSoundComponent(mixer1)")
        << "the properties call no platform function";
}

// ---- exceptions ----

TEST_F(SoundStreamComponent, ThePlatformsExceptionsStayInsideAndLeakNothing)
{
    const char* const functions[] = {
        "CopyCStringToPascal", "NewString",         "RegisterComponent",   "DisposeHandle",
        "SetComponentRefcon",  "AudioConverterNew", "AudioOutputUnitStop", "CountComponentInstances",
        "UnregisterComponent"};
    for (const char* const function : functions) {
        SCOPED_TRACE(function);
        startOver();
        bool hasThrown = false;
        spy::answer(function).during = [&] {
            if (hasThrown) return;
            hasThrown = true;
            throw Thrown();
        };
        object().initComponent();
        object().openComponent();
        object().attach(unit());
        object().openComponent();
        object().closeComponent();
        EXPECT_TRUE(hasThrown);
        EXPECT_EQ(object().data().attachedUnit, nullptr);
        EXPECT_FALSE(object().isOpen());
        object().openComponent();
        EXPECT_TRUE(object().isOpen()) << "a later OpenComponent succeeds";
    }
}

} // namespace
