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

} // namespace

DeviceRef findOutputByChoice(const std::vector<DeviceRef>& devices, const DeviceRef& builtIn,
                             const std::string& choice, std::string& error)
{
    if (choice == "simulated") return builtIn;
    char* end = nullptr;
    const unsigned long number = std::strtoul(choice.c_str(), &end, 10);
    std::vector<DeviceRef> matching;
    for (std::size_t index = 0; index < devices.size(); ++index) {
        const DeviceRef& device = devices[index];
        if (device->settings.outputChannels == 0) continue;
        const bool isNumber = !choice.empty() && *end == 0 && index == number;
        if (isNumber || device->name == choice || device->uid == choice) return device;
        if (!choice.empty() && lowerCase(device->name).find(lowerCase(choice)) != std::string::npos)
            matching.push_back(device);
    }
    if (matching.size() == 1) return matching[0];
    error = (matching.empty() ? "there is no output device \"" : "more than one output device fits \"") +
            choice + "\"; there are:";
    for (std::size_t index = 0; index < devices.size(); ++index)
        if (devices[index]->settings.outputChannels)
            error += " " + std::to_string(index) + " \"" + devices[index]->name + "\"";
    return nullptr;
}

} // namespace kvxplatform::hal
