#include "platform/hal/simulated_device.h"

#include <atomic>

namespace kvxplatform::hal {

namespace {

DeviceRef make(const std::string& name, const std::string& uid, const Settings& settings)
{
    auto device = std::make_shared<Device>();
    device->name = name;
    device->manufacturer = "KVX Audio";
    device->system = "simulated";
    device->uid = uid;
    device->transport = kAudioDeviceTransportTypeVirtual;
    device->isSimulated = true;
    device->settings = settings;
    return device;
}

} // namespace

DeviceRef makeSimulatedDevice(const KVXSimulatedDevice& description)
{
    static std::atomic<unsigned> made{0};
    const unsigned number = made++;
    Settings settings;
    if (description.sampleRate > 0) settings.rate = description.sampleRate;
    settings.inputChannels = description.inputChannels;
    if (description.outputChannels || description.inputChannels)
        settings.outputChannels = description.outputChannels;
    if (description.sliceFrames) settings.sliceFrames = description.sliceFrames;
    settings.latencyFrames = description.latencyFrames;
    const std::string name = description.name ? description.name : "Simulated Device";
    const std::string uid =
        description.uid ? description.uid : "kvx:simulated:" + std::to_string(number) + ":" + name;
    DeviceRef device = make(name, uid, settings);
    device->driver = description.isStepped ? Driver::steps : Driver::timer;
    return device;
}

DeviceRef makeSimulatedInput()
{
    Settings settings;
    settings.outputChannels = 0;
    settings.inputChannels = 1;
    return make("Simulated Input", "kvx:simulated:input", settings);
}

} // namespace kvxplatform::hal
