#include "host/kvx/classes_and_devices.h"

#include "host/kvx/devices/demo.h"
#include "host/kvx/devices/device_text.h"
#include "host/kvx/devices/output_device.h"
#include "host/kvx/devices/watch.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <ctime>
#include <optional>
#include <unistd.h>

namespace kvx {
namespace {

using nlohmann::ordered_json;

// ---- classes ----

ordered_json propertyJson(const host::PropertyInfo& property)
{
    ordered_json json = {{"name", property.name},
                         {"type", property.typeText},
                         {"readOnly", property.isReadOnly()},
                         {"flags", property.flags},
                         {"access", property.getterAccess == host::Access::field ? "field" : "function"}};
    if (!property.group.empty()) json["group"] = property.group;
    return json;
}

ordered_json methodJson(const host::MethodInfo& method)
{
    return {
        {"declaration", method.text}, {"indexedProperty", method.setter != nullptr}, {"flags", method.flags}};
}

template <class Items, class ToJson>
ordered_json listJson(const Items& items, ToJson toJson)
{
    ordered_json list = ordered_json::array();
    for (const auto& item : items) list.push_back(toJson(item));
    return list;
}

ordered_json classJson(const host::ClassInfo& info)
{
    const auto text = [](const auto& item) { return item.text; };
    return {{"name", info.name},
            {"super", info.superName},
            {"layout", info.layout},
            {"flags", info.flags},
            {"dataSize", info.dataSize},
            {"properties", listJson(info.properties, propertyJson)},
            {"sharedProperties", listJson(info.sharedProperties, propertyJson)},
            {"methods", listJson(info.methods, methodJson)},
            {"sharedMethods", listJson(info.sharedMethods, methodJson)},
            {"events", listJson(info.events, text)},
            {"constants", listJson(info.constants, text)}};
}

template <class Items, class ToText>
void printSection(const char* title, const Items& items, ToText toText)
{
    if (items.empty()) return;
    fmt::print("  {}\n", title);
    for (const auto& item : items) fmt::print("    {}\n", toText(item));
}

void printClass(const host::ClassInfo& info)
{
    const auto text = [](const auto& item) { return item.text; };
    const auto propertyText = [](const host::PropertyInfo& property) {
        return fmt::format("{} as {} ({})", property.name, property.typeText,
                           property.isReadOnly() ? "read" : "read, write");
    };
    fmt::print("{}\n", info.name);
    printSection("Properties", info.properties, propertyText);
    printSection("Shared properties", info.sharedProperties, propertyText);
    printSection("Methods", info.methods, text);
    printSection("Shared methods", info.sharedMethods, text);
    printSection("Events", info.events, text);
    printSection("Constants", info.constants, text);
}

void printSummary(const host::ClassInfo& info)
{
    fmt::print(
        "{:<24} {:>3} properties  {:>3} methods  {:>3} shared methods  {:>2} events  {:>3} constants\n",
        info.name, info.properties.size(), info.methods.size(), info.sharedMethods.size(), info.events.size(),
        info.constants.size());
}

const host::ClassInfo& findClass(const host::Host& host, const std::string& name)
{
    const host::ClassInfo* info = host.findClass(name);
    if (!info || info->isBuiltIn)
        throw Failure(fmt::format("the library has no class {}; `kvx classes` lists its classes", name));
    return *info;
}

// ---- devices ----

ordered_json deviceRowJson(const DeviceFacts& device, std::size_t row, const Roles& roles)
{
    const auto rangeJson = [](const ValueRange& range) -> ordered_json {
        return {{"minimum", range.minimum}, {"maximum", range.maximum}};
    };
    return {{"number", row},
            {"id", device.id},
            {"name", device.name},
            {"system", device.system},
            {"maker", device.maker},
            {"uid", device.uid},
            {"inputChannels", device.inputs},
            {"outputChannels", device.outputs},
            {"rate", device.rate},
            {"rates", listJson(device.rates, rangeJson)},
            {"sliceFrames", device.slice},
            {"latencyFrames", device.latency},
            {"isDefaultOutput", device.id == roles.output},
            {"isDefaultSystemOutput", device.id == roles.systemOutput},
            {"isDefaultInput", device.id == roles.input},
            {"isAlive", device.isAlive},
            {"isRunning", device.isRunning}};
}

/// Print a line that reports a change, with the time of day. The output is flushed, because the reader of a
/// pipe follows the changes.
void printChange(const std::string& line)
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    fmt::print("{:02}:{:02}:{:02}  {}\n", local.tm_hour, local.tm_min, local.tm_sec, line);
    std::fflush(stdout);
}

int watchDevices(host::Host& host, const CoreAudio& core, double demoSeconds)
{
    // The longest wait for a change. After it, the loop checks for Ctrl-C and runs the next step of the demo.
    constexpr double waitSeconds = 0.1, demoWaitSeconds = 0.01;
    InterruptGuard guard;
    Watch watch(host, core, printChange);
    fmt::print("{}", deviceTable(watch.devices(), watch.roles(), terminalWidth(STDOUT_FILENO)));
    std::fflush(stdout);

    std::optional<Demo> demo;
    if (demoSeconds > 0) demo.emplace(host, core, demoSeconds);
    // The demo waits until its last change is reported, because its next step could undo that change.
    bool isReported = true;
    while (!isInterrupted()) {
        if (demo && isReported) isReported = !demo->stepIfDue();
        if (watch.reportChanges(demo ? demoWaitSeconds : waitSeconds)) isReported = true;
    }
    return interruptExitCode();
}

} // namespace

std::string deviceJson(const std::vector<DeviceFacts>& devices, const Roles& roles)
{
    ordered_json list = ordered_json::array();
    for (const DeviceFacts& device : devices) list.push_back(deviceRowJson(device, list.size(), roles));
    return list.dump(2, ' ', false, ordered_json::error_handler_t::replace);
}

int runClasses(const ClassesOptions& options)
{
    Library library(options.library);
    const host::Host& host = library.host();
    const std::vector<const host::ClassInfo*> classes = host.pluginClasses();
    const auto pointedJson = [](const host::ClassInfo* info) { return classJson(*info); };
    if (options.name.empty() && options.isJson)
        fmt::print("{}\n", listJson(classes, pointedJson).dump(2));
    else if (options.name.empty())
        for (const host::ClassInfo* info : classes) printSummary(*info);
    else if (options.isJson)
        fmt::print("{}\n", classJson(findClass(host, options.name)).dump(2));
    else
        printClass(findClass(host, options.name));
    return reportLeaks(library, 0);
}

int runDevices(const DevicesOptions& options)
{
    Library library(options.library);
    int exitCode = 0;
    {
        checkHardware();
        const CoreAudio core(library.host());
        if (options.isWatching)
            exitCode = watchDevices(library.host(), core, options.demoSeconds);
        else if (options.isJson)
            fmt::print("{}\n", deviceJson(readAllDevices(core), readRoles(core)));
        else
            fmt::print("{}",
                       deviceTable(readAllDevices(core), readRoles(core), terminalWidth(STDOUT_FILENO)));
    }
    return reportLeaks(library, exitCode);
}

} // namespace kvx
