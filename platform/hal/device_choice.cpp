#include "platform/hal/device_choice.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

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

/// Find the device with a row number of the list.
/// Returns  null if `text` is not a number, or the list has no such row.
DeviceRef deviceInRow(const std::vector<DeviceRef>& devices, const std::string& text)
{
    char* end = nullptr;
    const unsigned long row = std::strtoul(text.c_str(), &end, 10);
    return !text.empty() && *end == 0 && row < devices.size() ? devices[row] : nullptr;
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
    if (const DeviceRef device = deviceInRow(devices, text)) return {device};
    return devicesNamed(devices, text);
}

DeviceRef findOutputByChoice(const std::vector<DeviceRef>& devices, const DeviceRef& builtIn,
                             const std::string& choice, std::string& error)
{
    if (choice == "simulated") return builtIn;
    if (const DeviceRef device = deviceInRow(devices, choice); device && device->settings.outputChannels != 0)
        return device;
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
