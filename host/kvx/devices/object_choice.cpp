#include "host/kvx/devices/object_choice.h"

#include "host/kvx/text/failure.h"
#include "host/kvx/text/number_text.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace kvx {
namespace {

struct NamedDevice {
    ObjectID id;
    std::string name, uid;
};

std::vector<NamedDevice> namedDevices(const CoreAudio& core)
{
    std::vector<NamedDevice> devices;
    for (ObjectID id : itemsOf<ObjectID>(core.readSystem('dev#').value))
        devices.push_back({id, core.readText({id, 'lnam'}).value, core.readText({id, 'uid '}).value});
    return devices;
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

std::string quotedNames(const std::vector<const NamedDevice*>& devices)
{
    std::string text;
    for (const NamedDevice* device : devices)
        text += fmt::format("{}\"{}\"", text.empty() ? "" : ", ", plainText(device->name));
    return text;
}

ChosenObject chooseByName(const CoreAudio& core, const std::string& text)
{
    const auto devices = text.empty() ? std::vector<NamedDevice>{} : namedDevices(core);
    std::vector<const NamedDevice*> exact, partial;
    for (const NamedDevice& device : devices) {
        if (device.uid == text || lower(device.name) == lower(text)) exact.push_back(&device);
        if (lower(device.name).find(lower(text)) != std::string::npos) partial.push_back(&device);
    }
    const auto& found = exact.empty() ? partial : exact;
    if (found.empty())
        throw Failure(
            fmt::format("no device is called \"{}\"; `kvx devices` lists those there are", plainText(text)));
    if (found.size() > 1)
        throw Failure(fmt::format("\"{}\" fits {}; give the number from `kvx devices`", plainText(text),
                                  quotedNames(found)));
    return {found.front()->id, plainText(found.front()->name)};
}

/// The object of that ID, which is of class `wanted`, or of any where that is 0.
ChosenObject chooseByID(const CoreAudio& core, ObjectID id, Code wanted)
{
    const Answer found = core.classOf(id);
    if (!found.isGood())
        throw Failure(
            fmt::format("object {}: {}; `kvx devices` lists the devices, `kvx get DEVICE stm#` the streams "
                        "of one",
                        id, printStatus(found.status)));
    const Code kind = itemOf<Code>(found.value).value_or(0);
    if (wanted && kind != wanted)
        throw Failure(fmt::format("object {} is of class {}, not {}; use id:{}", id, printCode(kind),
                                  printCode(wanted), id));
    if (kind == systemClass) return {id, "system"};
    if (kind == deviceClass) return {id, plainText(core.readText({id, 'lnam'}).value)};
    return {id, fmt::format("{} {}", kind == streamClass ? "stream" : "object", id)};
}

/// The number behind "prefix", if the text begins so and is a number then.
std::optional<std::uint32_t> numberBehind(std::string_view prefix, std::string_view text)
{
    return text.substr(0, prefix.size()) == prefix ? readNumber(text.substr(prefix.size())) : std::nullopt;
}

} // namespace

ChosenObject chooseObject(const CoreAudio& core, const std::string& text)
{
    if (text == "system") return {systemObject, "system"};
    if (const auto id = numberBehind("id:", text)) return chooseByID(core, *id, 0);
    if (const auto id = numberBehind("stream:", text)) return chooseByID(core, *id, streamClass);
    const auto number = readNumber(text);
    if (!number) return chooseByName(core, text);
    const auto devices = itemsOf<ObjectID>(core.readSystem('dev#').value);
    return chooseByID(core, *number < devices.size() ? devices[*number] : *number, 0);
}

ObjectID objectInValue(const CoreAudio& core, const std::string& text)
{
    const auto id = readNumber(text);
    return id ? *id : chooseObject(core, text).id;
}

} // namespace kvx
