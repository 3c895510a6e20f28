#include "host/soundclient/sound_output.h"

#include "tests/host/soundclient/registered_component.h"

#include <Carbon/Carbon.h>

#include <gmock/gmock.h>

namespace soundclient {
namespace {

using testing::ElementsAre;

constexpr auto subType = RegisteredComponent::subType, manufacturer = RegisteredComponent::manufacturer;

TEST(SoundOutput, IsFoundBySubtypeAndManufacturer)
{
    EXPECT_THROW(SoundOutput(subType, manufacturer), NoComponent);
    RegisteredComponent component;
    EXPECT_THROW(SoundOutput('else', manufacturer), NoComponent);
    EXPECT_THROW(SoundOutput(subType, 'else'), NoComponent);
    EXPECT_EQ(component.instances(), 0);
    {
        const SoundOutput output(subType, manufacturer);
        EXPECT_EQ(component.instances(), 1);
        EXPECT_NE(output.instance(), nullptr);
    }
    EXPECT_EQ(component.instances(), 0);
    EXPECT_THAT(component.calls, ElementsAre("open", "init 0", "close"));
}

// An earlier registration may be orphaned: its component cannot be opened.
TEST(SoundOutput, OpensTheLastRegisteredComponent)
{
    ComponentDescription description = {kSoundOutputDeviceType, subType, manufacturer, 0, 0};
    // This component cannot be opened, because it has no entry point.
    const Component earlier = RegisterComponent(&description, nullptr, 0, nullptr, nullptr, nullptr);
    ASSERT_NE(earlier, nullptr);
    {
        RegisteredComponent component;
        const SoundOutput output(subType, manufacturer);
        EXPECT_EQ(component.instances(), 1);
        EXPECT_EQ(CountComponentInstances(earlier), 0);
    }
    EXPECT_EQ(UnregisterComponent(earlier), noErr);
}

TEST(SoundOutput, ReportsAMissingEntryPoint)
{
    const RegisteredComponent component(false);
    try {
        const SoundOutput output(subType, manufacturer);
        FAIL() << "the component opened";
    } catch (const NoEntryPoint& refusal) {
        EXPECT_EQ(refusal.status(), -3004);
    }
}

TEST(SoundOutput, LeavesNoInstanceOpenAfterARefusal)
{
    RegisteredComponent component;
    const struct {
        SInt16 selector;
        ComponentResult status;
        const char* text;
    } facts[] = {
        {kComponentOpenSelect, memFullErr, "opening the sound component is refused, with status -108"},
        {kSoundComponentInitOutputDeviceSelect, noHardwareErr,
         "initialising the sound component is refused, with status -200"},
    };
    for (const auto& fact : facts) {
        component.refusals = {{fact.selector, fact.status}};
        try {
            const SoundOutput output(subType, manufacturer);
            ADD_FAILURE() << "the component opened";
        } catch (const Refusal& refusal) {
            EXPECT_EQ(refusal.status(), fact.status);
            EXPECT_STREQ(refusal.what(), fact.text);
        }
        EXPECT_EQ(component.instances(), 0) << fact.text;
    }
}

TEST(SoundOutput, ReportsItsFormat)
{
    RegisteredComponent component;
    component.channels = 1;
    component.bits = 8;
    component.rate = 0x56EE8BA3; // 22254.5454…
    const SoundOutput output(subType, manufacturer);
    const OutputForm form = output.form();
    EXPECT_EQ(form.channels, 1);
    EXPECT_EQ(form.bits, 8);
    EXPECT_EQ(form.rate, 0x56EE8BA3 / 65536.0);
    component.refusals = {{kSoundComponentGetInfoSelect, siUnknownInfoType}};
    EXPECT_THROW(output.form(), Refusal);
}

TEST(SoundOutput, SendsEachSelectorWithItsArguments)
{
    RegisteredComponent component;
    SoundOutput output(subType, manufacturer);
    component.calls.clear();
    const Source source = output.addSource();
    EXPECT_EQ(reinterpret_cast<long>(source), 7);
    SoundParamBlock block = {};
    block.desc.sampleCount = 12;
    output.play(source, block);
    output.play(source, block, true);
    output.start(source);
    output.pause(source);
    output.stop(source);
    output.removeSource(source);
    EXPECT_THAT(component.calls,
                ElementsAre("add", "play 7 of 12 actions 0", "play 7 of 12 actions 1", "start 1 source 7",
                            "pause 1 source 7", "stop 1 source 7", "remove 7"));
}

TEST(SoundOutput, ReportsEveryRefusal)
{
    RegisteredComponent component;
    SoundOutput output(subType, manufacturer);
    const Source source = output.addSource();
    SoundParamBlock block = {};
    const struct {
        SInt16 selector;
        void (*call)(SoundOutput&, Source, SoundParamBlock&);
    } facts[] = {
        {kSoundComponentAddSourceSelect, [](SoundOutput& o, Source, SoundParamBlock&) { o.addSource(); }},
        {kSoundComponentRemoveSourceSelect,
         [](SoundOutput& o, Source s, SoundParamBlock&) { o.removeSource(s); }},
        {kSoundComponentPlaySourceBufferSelect,
         [](SoundOutput& o, Source s, SoundParamBlock& b) { o.play(s, b); }},
        {kSoundComponentStartSourceSelect, [](SoundOutput& o, Source s, SoundParamBlock&) { o.start(s); }},
        {kSoundComponentPauseSourceSelect, [](SoundOutput& o, Source s, SoundParamBlock&) { o.pause(s); }},
        {kSoundComponentStopSourceSelect, [](SoundOutput& o, Source s, SoundParamBlock&) { o.stop(s); }},
    };
    for (const auto& fact : facts) {
        component.refusals = {{fact.selector, badChannel}};
        try {
            fact.call(output, source, block);
            ADD_FAILURE() << "selector " << fact.selector << " was not refused";
        } catch (const Refusal& refusal) {
            EXPECT_EQ(refusal.status(), badChannel) << fact.selector;
        }
    }
}

} // namespace
} // namespace soundclient
