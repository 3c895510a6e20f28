#include "tests/host/soundclient/registered_component.h"

#include <cstddef>
#include <cstring>

namespace soundclient {
namespace {

RegisteredComponent* current = nullptr;

constexpr long onlySource = 7;

long wordAt(const ComponentParameters& parameters, std::size_t index)
{
    long word = 0;
    std::memcpy(&word,
                reinterpret_cast<const char*>(&parameters) + offsetof(ComponentParameters, params) +
                    index * sizeof word,
                sizeof word);
    return word;
}

/// Format a call whose arguments are a number of sources and the sources: "start 1 source 7".
std::string formatCall(const char* verb, const ComponentParameters& parameters)
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

void RegisteredComponent::completeOne()
{
    SoundParamBlockPtr block = queued.front();
    queued.erase(queued.begin());
    block->completionRtn(&block);
}

ComponentResult RegisteredComponent::enter(ComponentParameters* parameters, Handle)
{
    return current->answer(*parameters);
}

ComponentResult RegisteredComponent::getInfo(OSType what, void* out)
{
    const auto write = [out](auto value) {
        std::memcpy(out, &value, sizeof value);
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
    const auto log = [&](const std::string& text) { calls.push_back(text); };
    switch (parameters.what) {
    case kComponentOpenSelect:
        log("open");
        break;
    case kComponentCloseSelect:
        log("close");
        break;
    case kSoundComponentInitOutputDeviceSelect:
        log("init " + std::to_string(word(0)));
        break;
    case kSoundComponentAddSourceSelect: {
        log("add");
        const auto source = reinterpret_cast<SoundSource>(onlySource);
        std::memcpy(reinterpret_cast<void*>(word(0)), &source, sizeof source);
        break;
    }
    case kSoundComponentRemoveSourceSelect:
        log("remove " + std::to_string(word(0)));
        break;
    case kSoundComponentGetInfoSelect:
        if (const auto refusal = refusals.find(parameters.what); refusal != refusals.end())
            return refusal->second;
        return getInfo(static_cast<OSType>(word(1)), reinterpret_cast<void*>(word(2)));
    case kSoundComponentStartSourceSelect:
        log(formatCall("start", parameters));
        break;
    case kSoundComponentPauseSourceSelect:
        log(formatCall("pause", parameters));
        break;
    case kSoundComponentStopSourceSelect:
        log(formatCall("stop", parameters));
        queued.clear();
        break;
    case kSoundComponentPlaySourceBufferSelect: {
        auto* const block = reinterpret_cast<SoundParamBlockPtr>(word(1));
        log("play " + std::to_string(word(0)) + " of " + std::to_string(block->desc.sampleCount) +
            " actions " + std::to_string(word(2)));
        if (!refusals.count(parameters.what)) queued.push_back(block);
        break;
    }
    default:
        return badComponentSelector;
    }
    const auto refusal = refusals.find(parameters.what);
    return refusal == refusals.end() ? ComponentResult{noErr} : refusal->second;
}

} // namespace soundclient
