#include "host/kvx/devices/device_facts.h"

#include "host/kvx/devices/output_device.h"
#include "host/kvx/text/failure.h"

#include <fmt/core.h>

#include <cstddef>

namespace kvx {
namespace {

/// Reads the properties of one device. The library's constants name the properties.
class Reader {
public:
    Reader(const CoreAudio& core, ObjectID device) : core_(core), device_(device) {}

    template <class T>
    std::optional<T> find(const char* name, bool isInput = false, std::uint32_t channel = 0) const
    {
        return itemOf<T>(bytes(name, isInput, channel));
    }
    template <class T>
    T get(const char* name, bool isInput = false) const
    {
        return find<T>(name, isInput).value_or(T());
    }
    std::string bytes(const char* name, bool isInput = false, std::uint32_t channel = 0) const
    {
        return core_.readDevice(device_, channel, isInput, selector(name)).value;
    }
    std::string text(const char* name) const { return core_.readText({device_, selector(name)}).value; }

    std::uint32_t channels(bool isInput) const
    {
        const std::string list = bytes("kAudioDevicePropertyStreamConfiguration", isInput);
        if (list.size() < offsetof(BufferList, buffers)) return 0;
        std::uint32_t count = 0;
        for (const Buffer& buffer :
             itemsOf<Buffer>(std::string_view(list).substr(offsetof(BufferList, buffers))))
            count += buffer.channels;
        return count;
    }

private:
    Code selector(const char* name) const { return core_.selectorNamed(name).value_or(0); }

    const CoreAudio& core_;
    ObjectID device_;
};

ObjectID roleOf(const CoreAudio& core, const char* name)
{
    return itemOf<ObjectID>(core.readSystem(core.selectorNamed(name).value_or(0)).value).value_or(0);
}

std::string systemOf(ObjectID device)
{
    for (const KVXDeviceInfo& each : listDevices())
        if (each.device == device) return each.system;
    return {};
}

} // namespace

std::vector<ObjectID> readDeviceList(const CoreAudio& core)
{
    const Answer list = core.readSystem(core.selectorNamed("kAudioHardwarePropertyDevices").value_or(0));
    if (!list.isGood())
        throw Failure(fmt::format("the list of devices cannot be read: {}; close other programs",
                                  formatStatus(list.status)));
    return itemsOf<ObjectID>(list.value);
}

std::optional<DeviceFacts> readDeviceFacts(const CoreAudio& core, ObjectID device)
{
    const Reader reader(core, device);
    const std::optional<std::uint32_t> isAlive =
        reader.find<std::uint32_t>("kAudioDevicePropertyDeviceIsAlive");
    if (!isAlive) return std::nullopt;

    DeviceFacts facts;
    facts.id = device;
    facts.name = reader.text("kAudioDevicePropertyDeviceNameCFString");
    facts.maker = reader.text("kAudioDevicePropertyDeviceManufacturerCFString");
    facts.uid = reader.text("kAudioDevicePropertyDeviceUID");
    facts.system = systemOf(device);
    facts.inputs = reader.channels(true);
    facts.outputs = reader.channels(false);
    facts.rate = reader.get<double>("kAudioDevicePropertyNominalSampleRate");
    facts.rates = itemsOf<ValueRange>(reader.bytes("kAudioDevicePropertyAvailableNominalSampleRates"));
    facts.slice = reader.get<std::uint32_t>("kAudioDevicePropertyBufferFrameSize");
    facts.latency = reader.get<std::uint32_t>("kAudioDevicePropertyLatency", facts.outputs == 0);
    facts.isAlive = *isAlive != 0;
    facts.isRunning = reader.get<std::uint32_t>("kAudioDevicePropertyDeviceIsRunning") != 0;
    for (std::uint32_t channel = 0; channel <= facts.outputs; ++channel) {
        if (const std::optional<float> volume =
                reader.find<float>("kAudioDevicePropertyVolumeScalar", false, channel))
            facts.volumes[channel] = *volume;
        if (const std::optional<std::uint32_t> mute =
                reader.find<std::uint32_t>("kAudioDevicePropertyMute", false, channel))
            facts.mutes[channel] = *mute != 0;
    }
    return facts;
}

std::vector<DeviceFacts> readAllDevices(const CoreAudio& core)
{
    std::vector<DeviceFacts> devices;
    for (ObjectID id : readDeviceList(core))
        if (std::optional<DeviceFacts> facts = readDeviceFacts(core, id))
            devices.push_back(std::move(*facts));
    if (devices.empty()) throw Failure("no device can be read; close other programs");
    return devices;
}

Roles readRoles(const CoreAudio& core)
{
    return {roleOf(core, "kAudioHardwarePropertyDefaultOutputDevice"),
            roleOf(core, "kAudioHardwarePropertyDefaultSystemOutputDevice"),
            roleOf(core, "kAudioHardwarePropertyDefaultInputDevice")};
}

} // namespace kvx
