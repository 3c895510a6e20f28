#include "host/kvx/devices/device_table.h"

#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kvx {
namespace {

using nlohmann::ordered_json;

// clang-format off
const std::vector<TableColumn> columns = {
    // title     align                least leaves
    {"no.",      TableColumn::right,  0,    0},
    {"id",       TableColumn::right,  0,    0},
    {"name",     TableColumn::left,  16,    0},
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
// clang-format on

struct RoleName {
    const char* name;
    ObjectID Roles::*device;
};
constexpr RoleName roleNames[] = {
    {"out", &Roles::output}, {"sys", &Roles::systemOutput}, {"in", &Roles::input}};

std::string printRoles(ObjectID device, const Roles& roles)
{
    std::string text;
    for (const RoleName& role : roleNames)
        if (roles.*role.device == device) text += (text.empty() ? "" : " ") + std::string(role.name);
    return text;
}

const char* printState(const DeviceFacts& device)
{
    return !device.isAlive ? "dead" : device.isRunning ? "running" : "idle";
}

ordered_json toJson(const DeviceFacts& device, std::size_t row, const Roles& roles)
{
    ordered_json rates = ordered_json::array();
    for (const ValueRange& range : device.rates)
        rates.push_back({{"minimum", range.minimum}, {"maximum", range.maximum}});
    return {{"number", row},
            {"id", device.id},
            {"name", device.name},
            {"maker", device.maker},
            {"uid", device.uid},
            {"inputChannels", device.inputs},
            {"outputChannels", device.outputs},
            {"rate", device.rate},
            {"rates", rates},
            {"sliceFrames", device.slice},
            {"latencyFrames", device.latency},
            {"isDefaultOutput", device.id == roles.output},
            {"isDefaultSystemOutput", device.id == roles.systemOutput},
            {"isDefaultInput", device.id == roles.input},
            {"isAlive", device.isAlive},
            {"isRunning", device.isRunning}};
}

} // namespace

std::string printRates(const std::vector<ValueRange>& rates)
{
    std::string text;
    for (const ValueRange& range : rates) {
        if (!text.empty()) text += ' ';
        text += range.minimum == range.maximum ? fmt::format("{}", range.minimum)
                                               : fmt::format("{}-{}", range.minimum, range.maximum);
    }
    return text;
}

std::string deviceTable(const std::vector<DeviceFacts>& devices, const Roles& roles, std::size_t width)
{
    std::vector<std::vector<std::string>> rows;
    for (const DeviceFacts& device : devices)
        rows.push_back({std::to_string(rows.size()), std::to_string(device.id), plainText(device.name),
                        plainText(device.maker), plainText(device.uid), std::to_string(device.inputs),
                        std::to_string(device.outputs), fmt::format("{}", device.rate),
                        printRates(device.rates), std::to_string(device.slice),
                        std::to_string(device.latency), printRoles(device.id, roles), printState(device)});
    return layOutTable(columns, rows, width);
}

std::string deviceJson(const std::vector<DeviceFacts>& devices, const Roles& roles)
{
    ordered_json list = ordered_json::array();
    for (const DeviceFacts& device : devices) list.push_back(toJson(device, list.size(), roles));
    return list.dump(2, ' ', false, ordered_json::error_handler_t::replace);
}

} // namespace kvx
