#include "platform/hal/device_choice.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>

namespace kvxplatform::hal {

namespace {

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

bool isIdentical(const Device& device, const std::string& text)
{
    return device.name == text || device.uid == text;
}

/// Read the whole number after `prefix` in a text such as "row:1".
/// Errors  nullopt for any other text.
std::optional<unsigned long> numberAfter(const std::string& prefix, const std::string& text)
{
    if (text.compare(0, prefix.size(), prefix) != 0 || text.size() == prefix.size()) return std::nullopt;
    char* end = nullptr;
    const unsigned long number = std::strtoul(text.c_str() + prefix.size(), &end, 10);
    return *end == 0 ? std::optional<unsigned long>(number) : std::nullopt;
}

/// Find the device with a row number of the list, "1" or "row:1", or with an ID, "id:4".
/// Returns  null for any other text, or if there is no such device.
DeviceRef deviceNumbered(const std::vector<DeviceRef>& devices, const std::string& text)
{
    for (const char* prefix : {"", "row:"})
        if (const auto row = numberAfter(prefix, text); row && *row < devices.size()) return devices[*row];
    const auto id = numberAfter("id:", text);
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [&](const DeviceRef& device) { return id && device->id == *id; });
    return found == devices.end() ? nullptr : *found;
}

std::vector<DeviceRef> devicesNamed(const std::vector<DeviceRef>& devices, const std::string& text)
{
    if (text.empty()) return {};
    std::vector<DeviceRef> identical, equal, partial;
    for (const DeviceRef& device : devices) {
        const std::string name = lowerCase(device->name);
        if (isIdentical(*device, text)) identical.push_back(device);
        if (name == lowerCase(text)) equal.push_back(device);
        if (name.find(lowerCase(text)) != std::string::npos) partial.push_back(device);
    }
    return !identical.empty() ? identical : !equal.empty() ? equal : partial;
}

} // namespace

std::vector<DeviceRef> devicesFitting(const std::vector<DeviceRef>& devices, const std::string& text)
{
    if (const DeviceRef device = deviceNumbered(devices, text)) return {device};
    return devicesNamed(devices, text);
}

DeviceRef findOutputByChoice(const std::vector<DeviceRef>& devices, const DeviceRef& builtIn,
                             const std::string& choice, std::string& error)
{
    if (choice == "simulated") return builtIn;
    const DeviceRef numbered = deviceNumbered(devices, choice);
    if (numbered && numbered->settings.outputChannels != 0) return numbered;
    std::vector<DeviceRef> outputs;
    std::string choices;
    for (std::size_t index = 0; index < devices.size(); ++index) {
        if (devices[index]->settings.outputChannels == 0) continue;
        outputs.push_back(devices[index]);
        choices += " " + std::to_string(index) + " \"" + devices[index]->name + "\"";
    }
    const std::vector<DeviceRef> matching = devicesNamed(outputs, choice);
    if (matching.size() == 1 || (!matching.empty() && isIdentical(*matching[0], choice))) return matching[0];
    error = (matching.empty() ? "there is no output device \"" : "more than one output device fits \"") +
            choice + "\"; there are:" + choices;
    return nullptr;
}

} // namespace kvxplatform::hal
