#include "host/kvx/devices/device_changes.h"

#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>

#include <cmath>

namespace kvx {
namespace {

class Lines {
public:
    explicit Lines(std::string subject) : subject_(std::move(subject)) {}

    template <class T>
    void compare(const T& before, const T& after, const char* what, const char* unit)
    {
        if (before != after) say(fmt::format("{} from {} to {}{}", what, before, after, unit));
    }
    void compareFlag(bool before, bool after, const char* whenSet, const char* whenNot)
    {
        if (before != after) say(after ? whenSet : whenNot);
    }
    void say(const std::string& text) { lines_.push_back(subject_ + ": " + text); }

    std::vector<std::string> take() { return std::move(lines_); }

private:
    std::string subject_;
    std::vector<std::string> lines_;
};

std::string printChannel(std::uint32_t channel)
{
    return channel == 0 ? std::string() : fmt::format(" of channel {}", channel);
}

/// Only what both moments know: a device that changed its channels is a change of its own.
template <class T, class Tell>
void compareChannels(const std::map<std::uint32_t, T>& before, const std::map<std::uint32_t, T>& after,
                     Tell tell)
{
    for (const auto& [channel, now] : after) {
        const auto was = before.find(channel);
        if (was != before.end() && was->second != now) tell(channel, was->second, now);
    }
}

} // namespace

std::string printDevice(const DeviceFacts& device)
{
    return fmt::format("{} (id {})", plainText(device.name), device.id);
}

std::vector<std::string> changesOfDevice(const DeviceFacts& before, const DeviceFacts& after)
{
    Lines lines(printDevice(after));
    lines.compare(before.inputs, after.inputs, "input channels", "");
    lines.compare(before.outputs, after.outputs, "output channels", "");
    lines.compare(before.rate, after.rate, "rate", " Hz");
    lines.compare(before.slice, after.slice, "slice", " frames");
    compareChannels(before.volumes, after.volumes, [&](std::uint32_t channel, float was, float now) {
        lines.say(fmt::format("volume{} from {} to {}", printChannel(channel), was, now));
    });
    compareChannels(before.mutes, after.mutes, [&](std::uint32_t channel, bool, bool now) {
        lines.say(fmt::format("mute{} {}", printChannel(channel), now ? "on" : "off"));
    });
    lines.compareFlag(before.isRunning, after.isRunning, "running", "stopped");
    lines.compareFlag(before.isAlive, after.isAlive, "alive", "no longer alive");
    return lines.take();
}

std::vector<std::string> changesOfRoles(const Roles& before, const Roles& after,
                                        const std::function<std::string(ObjectID)>& nameOf)
{
    struct RoleFact {
        const char* name;
        ObjectID Roles::*device;
    };
    static constexpr RoleFact roles[] = {{"default output", &Roles::output},
                                         {"default system output", &Roles::systemOutput},
                                         {"default input", &Roles::input}};
    std::vector<std::string> lines;
    for (const RoleFact& role : roles) {
        const ObjectID was = before.*role.device, now = after.*role.device;
        if (was != now)
            lines.push_back(fmt::format("{}: from {} to {}", role.name, nameOf(was), nameOf(now)));
    }
    return lines;
}

std::string printArrival(const DeviceFacts& device)
{
    return fmt::format("{}: came, {} in, {} out, {} Hz", printDevice(device), device.inputs, device.outputs,
                       device.rate);
}

std::string printDeparture(const DeviceFacts& device) { return printDevice(device) + ": went"; }

} // namespace kvx
