#include "host/kvx/devices/device_text.h"

#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

namespace kvx {
namespace {

// clang-format off
const std::vector<TableColumn> columns = {
    // title     align               width move
    {"no.",      TableColumn::right,  0,    0},
    {"id",       TableColumn::right,  0,    0},
    {"name",     TableColumn::left,  16,    0},
    {"system",   TableColumn::left,   0,    0},
    {"maker",    TableColumn::left,  10,    2},
    {"UID",      TableColumn::left,  12,    3},
    {"in",       TableColumn::right,  0,    0},
    {"out",      TableColumn::right,  0,    0},
    {"rate",     TableColumn::right,  0,    0},
    {"rates",    TableColumn::left,  12,    1},
    {"slice",    TableColumn::right,  0,    0},
    {"latency",  TableColumn::right,  0,    0},
    {"default",  TableColumn::left,   0,    0},
    {"state",    TableColumn::left,   0,    0},
};

constexpr struct {
    const char* shortName;
    const char* name;
    ObjectID Roles::*device;
} roleNames[] = {
    {"out", "default output",        &Roles::output},
    {"sys", "default system output", &Roles::systemOutput},
    {"in",  "default input",         &Roles::input},
};
// clang-format on

std::string formatRoles(ObjectID device, const Roles& roles)
{
    std::string text;
    for (const auto& role : roleNames)
        if (roles.*role.device == device) text += (text.empty() ? "" : " ") + std::string(role.shortName);
    return text;
}

const char* formatState(const DeviceFacts& device)
{
    return !device.isAlive ? "dead" : device.isRunning ? "running" : "idle";
}

std::string formatChannel(std::uint32_t channel)
{
    return channel == 0 ? std::string() : fmt::format(" of channel {}", channel);
}

/// Call `print` for each channel whose value changed, with the former and the present value. Channels without
/// both values are skipped.
template <class T, class Print>
void compareChannels(const std::map<std::uint32_t, T>& before, const std::map<std::uint32_t, T>& after,
                     Print print)
{
    for (const auto& [channel, now] : after) {
        const auto was = before.find(channel);
        if (was != before.end() && was->second != now) print(channel, was->second, now);
    }
}

} // namespace

std::string deviceTable(const std::vector<DeviceFacts>& devices, const Roles& roles, std::size_t width)
{
    std::vector<std::vector<std::string>> rows;
    for (const DeviceFacts& device : devices)
        rows.push_back({std::to_string(rows.size()), std::to_string(device.id), plainText(device.name),
                        device.system, plainText(device.maker), plainText(device.uid),
                        std::to_string(device.inputs), std::to_string(device.outputs),
                        fmt::format("{}", device.rate), formatRates(device.rates),
                        std::to_string(device.slice), std::to_string(device.latency),
                        formatRoles(device.id, roles), formatState(device)});
    return layOutTable(columns, rows, width);
}

std::string formatRates(const std::vector<ValueRange>& rates)
{
    std::string text;
    for (const ValueRange& range : rates) {
        if (!text.empty()) text += ' ';
        text += range.minimum == range.maximum ? fmt::format("{}", range.minimum)
                                               : fmt::format("{}-{}", range.minimum, range.maximum);
    }
    return text;
}

std::string formatDevice(const DeviceFacts& device)
{
    return fmt::format("{} (id {})", plainText(device.name), device.id);
}

std::string formatArrival(const DeviceFacts& device)
{
    return fmt::format("{}: came, {} in, {} out, {} Hz", formatDevice(device), device.inputs, device.outputs,
                       device.rate);
}

std::string formatDeparture(const DeviceFacts& device) { return formatDevice(device) + ": went"; }

std::vector<std::string> changesOfDevice(const DeviceFacts& before, const DeviceFacts& after)
{
    std::vector<std::string> lines;
    const auto add = [&](const std::string& text) { lines.push_back(formatDevice(after) + ": " + text); };
    const auto compare = [&](auto was, auto now, const char* what, const char* unit) {
        if (was != now) add(fmt::format("{} from {} to {}{}", what, was, now, unit));
    };
    const auto compareFlag = [&](bool was, bool now, const char* whenSet, const char* whenCleared) {
        if (was != now) add(now ? whenSet : whenCleared);
    };
    compare(before.inputs, after.inputs, "input channels", "");
    compare(before.outputs, after.outputs, "output channels", "");
    compare(before.rate, after.rate, "rate", " Hz");
    compare(before.slice, after.slice, "slice", " frames");
    compareChannels(before.volumes, after.volumes, [&](std::uint32_t channel, float was, float now) {
        compare(was, now, ("volume" + formatChannel(channel)).c_str(), "");
    });
    compareChannels(before.mutes, after.mutes, [&](std::uint32_t channel, bool, bool now) {
        add(fmt::format("mute{} {}", formatChannel(channel), now ? "on" : "off"));
    });
    compareFlag(before.isRunning, after.isRunning, "running", "stopped");
    compareFlag(before.isAlive, after.isAlive, "alive", "no longer alive");
    return lines;
}

std::vector<std::string> changesOfRoles(const Roles& before, const Roles& after,
                                        const std::function<std::string(ObjectID)>& nameOf)
{
    std::vector<std::string> lines;
    for (const auto& role : roleNames) {
        const ObjectID was = before.*role.device, now = after.*role.device;
        if (was != now)
            lines.push_back(fmt::format("{}: from {} to {}", role.name, nameOf(was), nameOf(now)));
    }
    return lines;
}

} // namespace kvx
