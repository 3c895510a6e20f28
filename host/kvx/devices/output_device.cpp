#include "host/kvx/devices/output_device.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdlib>

namespace kvx {
namespace {

/// Get all devices from `fill`, a platform function that writes up to `capacity` devices to an array and
/// returns the number of devices.
template <class Fill>
std::vector<KVXDeviceInfo> allRows(Fill fill)
{
    std::vector<KVXDeviceInfo> rows(fill(nullptr, 0));
    const std::uint32_t count = fill(rows.data(), static_cast<std::uint32_t>(rows.size()));
    rows.resize(
        std::min<std::size_t>(count, rows.size())); // the number may have changed since the first call
    return rows;
}

/// The value of the environment variable KVX_AUDIO_DEVICE; "" if it is not set.
std::string choiceOfEnvironment()
{
    const char* choice = std::getenv("KVX_AUDIO_DEVICE");
    return choice ? choice : "";
}

void choose(const std::string& choice, const char* whereToName)
{
    if (KVXPlatformChooseOutputDevice(choice.c_str()) == 0) return;
    const std::string error = KVXPlatformErrorText();
    checkHardware(); // the requested device may belong to hardware that could not be read
    throw Failure(fmt::format("{}; name one of these devices with {}", error, whereToName));
}

void needSimulated(const KVXDeviceInfo& device, const char* option)
{
    if (!device.isSimulated)
        throw Failure(fmt::format("{} is for the simulated device, and this is {}; add `--device simulated`",
                                  option, device.name));
}

KVXDeviceInfo defaultDevice()
{
    const std::vector<KVXDeviceInfo> devices = listDevices();
    if (devices.empty()) throw Failure(KVXPlatformErrorText());
    const auto found =
        std::find_if(devices.begin(), devices.end(), [](const auto& each) { return each.isDefaultOutput; });
    if (found == devices.end())
        throw Failure("there is no output device; name one of `kvx devices` with --device");
    return *found;
}

} // namespace

void checkControl(std::int32_t status)
{
    if (status != 0) throw Failure(KVXPlatformErrorText());
}

void checkHardware() { checkControl(KVXPlatformCheckHardware()); }

std::vector<KVXDeviceInfo> listDevices() { return allRows(KVXPlatformGetDevices); }

std::vector<KVXDeviceInfo> findDevices(const std::string& text)
{
    return allRows([&text](KVXDeviceInfo* rows, std::uint32_t capacity) {
        return KVXPlatformFindDevices(text.c_str(), rows, capacity);
    });
}

bool isFallback(const KVXDeviceInfo& device, const DeviceRequest& request)
{
    return device.isSimulated && request.choice.empty() && choiceOfEnvironment().empty();
}

void useSimulatedDevicesOnly() { setenv("KVX_AUDIO_DEVICE", "simulated", 1); }

KVXDeviceInfo chooseDevice(const DeviceRequest& request)
{
    const std::string environment = choiceOfEnvironment();
    // If the device of KVX_AUDIO_DEVICE is missing, the platform falls back to another device. This command
    // fails instead, so the platform must not see the variable, unless its value is "simulated".
    if (request.choice == "simulated")
        useSimulatedDevicesOnly();
    else if (environment != "simulated")
        unsetenv("KVX_AUDIO_DEVICE");
    if (!request.choice.empty())
        choose(request.choice, "--device");
    else if (!environment.empty())
        choose(environment, "KVX_AUDIO_DEVICE or --device");
    if (!environment.empty()) setenv("KVX_AUDIO_DEVICE", environment.c_str(), 1);
    const KVXDeviceInfo device = defaultDevice();
    if (isFallback(device, request)) checkHardware();
    if (request.rate > 0) {
        needSimulated(device, "--device-rate");
        checkControl(KVXPlatformConfigureDevice(device.device, request.rate, 0, 0));
    }
    if (request.isStepped) {
        needSimulated(device, "--fast");
        checkControl(KVXPlatformSetStepped(device.device, 1));
    }
    return defaultDevice();
}

KVXDeviceInfo deviceNow(const KVXDeviceInfo& device)
{
    for (const KVXDeviceInfo& each : listDevices())
        if (each.device == device.device) return each;
    KVXDeviceInfo gone = device;
    gone.isAlive = 0;
    return gone;
}

void passTime(const KVXDeviceInfo& device, bool isStepped, std::uint64_t frames)
{
    const auto step = static_cast<std::uint32_t>(std::clamp<std::uint64_t>(frames, 1, longestStep));
    if (isStepped) KVXPlatformStep(device.device, step);
    const double pollSeconds = std::clamp(0.5 * step / device.sampleRate, 0.001, 0.02);
    KVXPlatformDrainMainQueue(isStepped ? 0.0 : pollSeconds);
}

Failure deviceDied(const KVXDeviceInfo& device)
{
    return Failure(
        fmt::format("{} was disconnected during playback; choose another device with --device", device.name));
}

std::string formatDevice(const KVXDeviceInfo& device, const DeviceRequest& request)
{
    if (!isFallback(device, request)) return fmt::format("Device: {}, {} Hz", device.name, device.sampleRate);
    return fmt::format("No sound hardware opens here, so this plays to the simulated device{}",
                       request.isStepped ? "." : ", in real time.");
}

} // namespace kvx
