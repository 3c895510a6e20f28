#include "host/kvx/library/core_audio.h"

namespace kvx {
namespace {

bool isSelector(const host::PropertyInfo& property)
{
    return property.group == "Constants" && property.type.base == host::Base::string;
}

} // namespace

CoreAudio::CoreAudio(host::Host& host) : object_(host.create("CoreAudioKVX")) {}

std::optional<Code> CoreAudio::selectorNamed(std::string_view name) const
{
    const host::PropertyInfo* property = object_.classInfo().property(name);
    return property && isSelector(*property) ? readCode(object_.get(name).text()) : std::nullopt;
}

std::vector<std::string> CoreAudio::selectorNames() const
{
    std::vector<std::string> names;
    for (const host::PropertyInfo& property : object_.classInfo().properties)
        if (isSelector(property)) names.push_back(property.name);
    return names;
}

Status CoreAudio::lastError() const { return static_cast<Status>(object_.get("Lasterror").integer()); }

// If a property has no bytes, the method returns nil. Lasterror is then 0, or -1 after a method whose name
// ends in Memory.
Answer CoreAudio::answer(const host::Value& result) const
{
    const Status status = lastError();
    return {status, status == 0 ? std::string(result.memoryBlock().bytes()) : std::string()};
}

Answer CoreAudio::read(const PropertyAddress& address) const
{
    return answer(object_.call("AudioObjectGetPropertyData", address.object, address.selector, address.scope,
                               address.element));
}

Answer CoreAudio::read(const PropertyAddress& address, const std::string& question) const
{
    const host::MemoryBlock buffer = host::MemoryBlock::copyOf(question.data(), question.size());
    return answer(object_.call("AudioObjectGetPropertyData", address.object, address.selector, address.scope,
                               address.element, nullptr, buffer));
}

Answer CoreAudio::readTextFor(const PropertyAddress& address, Code question) const
{
    constexpr std::uint32_t longestText = 1024;
    const host::MemoryBlock asked = host::MemoryBlock::copyOf(&question, sizeof question);
    const host::MemoryBlock text = host::MemoryBlock::ofSize(longestText);
    const Translation translation = {asked.data(), sizeof question, text.data(), longestText};
    const Answer answer = read(address, bytesOf(translation));
    return {answer.status, answer.isGood() ? std::string(text.bytes()) : std::string()};
}

Status CoreAudio::write(const PropertyAddress& address, std::string_view bytes) const
{
    object_.call("AudioObjectSetPropertyData", address.object, address.selector, address.scope,
                 address.element, host::MemoryBlock::copyOf(bytes.data(), bytes.size()));
    return lastError();
}

Answer CoreAudio::classOf(ObjectID object) const { return read({object, 'clas'}); }

Answer CoreAudio::readUnit(std::int64_t unit, std::uint32_t property) const
{
    return answer(object_.call("AudioUnitGetPropertyMemory", unit, property, 0, 0));
}

double CoreAudio::unitParameter(std::int64_t unit, std::uint32_t parameter) const
{
    return object_.call("AudioUnitGetParameter", unit, parameter, 0, 0).number();
}

Answer CoreAudio::readSystem(Code selector) const
{
    return answer(object_.call("AudioHardwareGetPropertyMemory", charactersOf(selector)));
}

Answer CoreAudio::readDevice(ObjectID device, std::uint32_t channel, bool isInput, Code selector) const
{
    return answer(
        object_.call("AudioDeviceGetPropertyMemory", device, channel, isInput, charactersOf(selector)));
}

Answer CoreAudio::readTextOf(Code objectClass, const PropertyAddress& address, bool isInput) const
{
    const std::string selector = charactersOf(address.selector);
    const host::Value text =
        objectClass == systemClass ? object_.call("AudioHardwareGetPropertyCFString", selector)
        : objectClass == streamClass
            ? object_.call("AudioStreamGetPropertyCFString", address.object, address.element, selector)
            : object_.call("AudioDeviceGetPropertyCFString", address.object, address.element, isInput,
                           selector);
    return {lastError(), text.text()};
}

Answer CoreAudio::readText(const PropertyAddress& address) const
{
    const Answer objectClass = classOf(address.object);
    if (!objectClass.isGood()) return objectClass;

    // For a missing property, the methods that read the text of a device set no status, but the method that
    // reads the size does.
    object_.call("AudioObjectGetPropertyDataSize", address.object, address.selector, address.scope,
                 address.element);
    if (const Status status = lastError(); status != 0) return {status, {}};

    const Code kind = itemOf<Code>(objectClass.value).value_or(0);
    const Answer text = readTextOf(kind, address, address.scope == inputScope);
    if (text.isGood() || kind != deviceClass || address.scope != globalScope) return text;
    return readTextOf(kind, address, true);
}

} // namespace kvx
