#include "host/soundclient/sound_output.h"

#include <Carbon/Carbon.h>

#include <fmt/core.h>

namespace soundclient {
namespace {

void check(const char* what, std::int32_t status)
{
    if (status != noErr) throw Refusal(what, status);
}

/// Find the last registered component that matches. An earlier match may be an orphaned registration, whose
/// component was unregistered while an instance of it was open.
Component find(std::uint32_t subType, std::uint32_t manufacturer)
{
    ComponentDescription looking = {kSoundOutputDeviceType, subType, manufacturer, 0, 0};
    Component found = nullptr;
    while (const Component next = FindNextComponent(found, &looking)) found = next;
    return found;
}

ComponentInstance open(std::uint32_t subType, std::uint32_t manufacturer)
{
    const Component component = find(subType, manufacturer);
    if (!component) throw NoComponent();
    ComponentInstance instance = nullptr;
    const OSErr status = OpenAComponent(component, &instance);
    if (status == unresolvedComponentDLLErr) throw NoEntryPoint(status);
    check("opening the sound component", status);
    return instance;
}

template <class T>
T getInfo(ComponentInstance instance, OSType what)
{
    T value = 0;
    check("asking the sound component for its format",
          SoundComponentGetInfo(instance, nullptr, what, &value));
    return value;
}

} // namespace

Refusal::Refusal(const char* what, std::int32_t status)
    : std::runtime_error(fmt::format("{} is refused, with status {}", what, status)), status_(status)
{
}

NoComponent::NoComponent() : Refusal("finding the sound component", invalidComponentID) {}

NoEntryPoint::NoEntryPoint(std::int32_t status) : Refusal("opening the sound component", status) {}

SoundOutput::SoundOutput(std::uint32_t subType, std::uint32_t manufacturer)
    : instance_(open(subType, manufacturer))
{
    const ComponentResult status = SoundComponentInitOutputDevice(instance_, 0);
    if (status == noErr) return;
    CloseComponent(instance_);
    throw Refusal("initialising the sound component", status);
}

SoundOutput::~SoundOutput() { CloseComponent(instance_); }

OutputForm SoundOutput::form() const
{
    return {getInfo<short>(instance_, siNumberChannels), getInfo<short>(instance_, siSampleSize),
            getInfo<UnsignedFixed>(instance_, siSampleRate) / 65536.0};
}

Source SoundOutput::addSource()
{
    SoundSource source = nullptr;
    check("adding a source of sound", SoundComponentAddSource(instance_, &source));
    return source;
}

void SoundOutput::removeSource(Source source)
{
    check("removing a source of sound", SoundComponentRemoveSource(instance_, source));
}

void SoundOutput::play(Source source, SoundParamBlock& buffer, bool isPaused)
{
    check("playing a buffer",
          SoundComponentPlaySourceBuffer(instance_, source, &buffer, isPaused ? kSourcePaused : 0));
}

void SoundOutput::start(Source source)
{
    check("starting a source of sound", SoundComponentStartSource(instance_, 1, &source));
}

void SoundOutput::pause(Source source)
{
    check("pausing a source of sound", SoundComponentPauseSource(instance_, 1, &source));
}

void SoundOutput::stop(Source source)
{
    check("stopping a source of sound", SoundComponentStopSource(instance_, 1, &source));
}

} // namespace soundclient
