#include "host/kvx/devices/output_device.h"

#include "host/kvx/commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace kvx {
namespace {

void check(std::int32_t status)
{
    if (status != 0) throw Failure(KVXPlatformErrorText());
}

// The environment's choice, if it makes one.
std::string choiceOfEnvironment()
{
    const char* choice = std::getenv("KVX_AUDIO_DEVICE");
    return choice ? choice : "";
}

void choose(const std::string& choice, const char* whereToName)
{
    if (KVXPlatformChooseOutputDevice(choice.c_str()) == 0) return;
    const std::string error = KVXPlatformErrorText();
    checkHardware(); // the device may be one that could not be read
    throw Failure(fmt::format("{}; name one of them with {}", error, whereToName));
}

void needSimulated(const KVXDeviceInfo& device, const char* option)
{
    if (!device.isSimulated)
        throw Failure(fmt::format("{} is for the simulated device, and this is {}; add --device simulated",
                                  option, device.name));
}

KVXDeviceInfo defaultDevice()
{
    const auto devices = listDevices();
    if (devices.empty()) throw Failure(KVXPlatformErrorText());
    const auto found =
        std::find_if(devices.begin(), devices.end(), [](const auto& each) { return each.isDefaultOutput; });
    if (found == devices.end())
        throw Failure("there is no output device; name one of `kvx devices` with --device");
    return *found;
}

// The user left the choice to the system, and the system has no hardware that opens.
bool isForWantOfHardware(const KVXDeviceInfo& device, const DeviceWish& wish)
{
    return device.isSimulated && wish.choice.empty() && !std::getenv("KVX_AUDIO_DEVICE");
}

} // namespace

void checkHardware() { check(KVXPlatformCheckHardware()); }

std::vector<KVXDeviceInfo> listDevices()
{
    std::vector<KVXDeviceInfo> rows(KVXPlatformGetDevices(nullptr, 0));
    const std::uint32_t count = KVXPlatformGetDevices(rows.data(), std::uint32_t(rows.size()));
    rows.resize(std::min<std::size_t>(count, rows.size()));
    return rows;
}

void addDeviceOptions(CLI::App& command, DeviceWish& wish)
{
    command.add_option("--device", wish.choice, "Name, part of a name, or number of `kvx devices`")
        ->type_name("DEVICE");
    command.add_option("--device-rate", wish.rate, "Sample rate of the simulated device")
        ->type_name("HZ")
        ->check(inRange(lowestRate, highestRate));
    command.add_flag("--fast", wish.isStepped,
                     "Do not wait for what nobody hears: turn the simulated device as fast as it goes");
}

void doWithoutHardware() { setenv("KVX_AUDIO_DEVICE", "simulated", 1); }

KVXDeviceInfo chooseDevice(const DeviceWish& wish)
{
    const std::string environment = choiceOfEnvironment();
    // The platform plays to another device when it cannot have this one. Here it is asked for once more, as
    // the user would with --device, to fail instead; only "simulated" changes what the platform looks for.
    if (wish.choice == "simulated")
        doWithoutHardware();
    else if (environment != "simulated")
        unsetenv("KVX_AUDIO_DEVICE");
    if (!wish.choice.empty())
        choose(wish.choice, "--device");
    else if (!environment.empty())
        choose(environment, "KVX_AUDIO_DEVICE or --device");
    if (!environment.empty()) setenv("KVX_AUDIO_DEVICE", environment.c_str(), 1);
    const KVXDeviceInfo device = defaultDevice();
    if (isForWantOfHardware(device, wish)) checkHardware();
    if (wish.rate > 0) {
        needSimulated(device, "--device-rate");
        check(KVXPlatformConfigureDevice(device.device, wish.rate, 0, 0));
    }
    if (wish.isStepped) {
        needSimulated(device, "--fast");
        check(KVXPlatformSetStepped(device.device, 1));
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
    const auto step = std::uint32_t(std::clamp<std::uint64_t>(frames, 1, longestStep));
    if (isStepped) KVXPlatformStep(device.device, step);
    const double pollSeconds = std::clamp(0.5 * step / device.sampleRate, 0.001, 0.02);
    KVXPlatformDrainMainQueue(isStepped ? 0.0 : pollSeconds);
}

Failure wentAway(const KVXDeviceInfo& device)
{
    return Failure(
        fmt::format("{} went away while playing; choose another device with --device", device.name));
}

std::string printDevice(const KVXDeviceInfo& device, const DeviceWish& wish)
{
    if (!isForWantOfHardware(device, wish))
        return fmt::format("Device: {}, {} Hz", device.name, device.sampleRate);
    return fmt::format("No sound hardware opens here, so this plays to the simulated device{}",
                       wish.isStepped ? "." : ", in real time.");
}

} // namespace kvx
