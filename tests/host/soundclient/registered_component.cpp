#include "tests/host/soundclient/registered_component.h"

#include <cstddef>
#include <cstring>

namespace soundclient {
namespace {

RegisteredComponent* current = nullptr;

constexpr long theSource = 7;

long wordAt(const ComponentParameters& parameters, std::size_t index)
{
    long word = 0;
    std::memcpy(&word,
                reinterpret_cast<const char*>(&parameters) + offsetof(ComponentParameters, params) +
                    index * sizeof word,
                sizeof word);
    return word;
}

/// "start 1 source 7": a count and a list.
std::string listed(const char* verb, const ComponentParameters& parameters)
{
    const auto count = static_cast<short>(wordAt(parameters, 0));
    std::string text = verb + (" " + std::to_string(count)) + " source";
    const auto* const sources = reinterpret_cast<const SoundSource*>(wordAt(parameters, 1));
    for (short i = 0; i < count; ++i) text += " " + std::to_string(reinterpret_cast<long>(sources[i]));
    return text;
}

} // namespace

RegisteredComponent::RegisteredComponent(bool hasEntryPoint)
{
    current = this;
    ComponentDescription description = {kSoundOutputDeviceType, subType, manufacturer, 0, 0};
    component_ = RegisterComponent(&description, hasEntryPoint ? NewComponentRoutineUPP(enter) : nullptr, 0,
                                   nullptr, nullptr, nullptr);
}

RegisteredComponent::~RegisteredComponent() { UnregisterComponent(component_); }

void RegisteredComponent::finishOne()
{
    SoundParamBlockPtr block = waiting.front();
    waiting.erase(waiting.begin());
    block->completionRtn(&block);
}

ComponentResult RegisteredComponent::enter(ComponentParameters* parameters, Handle)
{
    return current->answer(*parameters);
}

ComponentResult RegisteredComponent::tell(OSType what, void* place)
{
    const auto write = [place](auto value) {
        std::memcpy(place, &value, sizeof value);
        return ComponentResult{noErr};
    };
    switch (what) {
    case siNumberChannels:
        return write(channels);
    case siSampleSize:
        return write(bits);
    case siSampleRate:
        return write(rate);
    default:
        return siUnknownInfoType;
    }
}

ComponentResult RegisteredComponent::answer(ComponentParameters& parameters)
{
    const auto word = [&](std::size_t index) { return wordAt(parameters, index); };
    const auto note = [&](const std::string& text) { asked.push_back(text); };
    switch (parameters.what) {
    case kComponentOpenSelect:
        note("open");
        break;
    case kComponentCloseSelect:
        note("close");
        break;
    case kSoundComponentInitOutputDeviceSelect:
        note("init " + std::to_string(word(0)));
        break;
    case kSoundComponentAddSourceSelect: {
        note("add");
        const auto source = reinterpret_cast<SoundSource>(theSource);
        std::memcpy(reinterpret_cast<void*>(word(0)), &source, sizeof source);
        break;
    }
    case kSoundComponentRemoveSourceSelect:
        note("remove " + std::to_string(word(0)));
        break;
    case kSoundComponentGetInfoSelect:
        if (const auto refusal = refuse.find(parameters.what); refusal != refuse.end())
            return refusal->second;
        return tell(static_cast<OSType>(word(1)), reinterpret_cast<void*>(word(2)));
    case kSoundComponentStartSourceSelect:
        note(listed("start", parameters));
        break;
    case kSoundComponentPauseSourceSelect:
        note(listed("pause", parameters));
        break;
    case kSoundComponentStopSourceSelect:
        note(listed("stop", parameters));
        waiting.clear();
        break;
    case kSoundComponentPlaySourceBufferSelect: {
        auto* const block = reinterpret_cast<SoundParamBlockPtr>(word(1));
        note("play " + std::to_string(word(0)) + " of " + std::to_string(block->desc.sampleCount) +
             " actions " + std::to_string(word(2)));
        if (!refuse.count(parameters.what)) waiting.push_back(block);
        break;
    }
    default:
        return badComponentSelector;
    }
    const auto refusal = refuse.find(parameters.what);
    return refusal == refuse.end() ? ComponentResult{noErr} : refusal->second;
}

} // namespace soundclient
