#include "host/kvx/devices/shared_options.h"
#include "host/kvx/text/failure.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <memory>

namespace kvx {
namespace {

using nlohmann::ordered_json;

struct ClassesOptions {
    std::string name;
    bool isJson = false;
    LibraryOptions library;
};

std::string accessText(const host::PropertyInfo& property)
{
    return property.isReadOnly ? "read" : "read, write";
}

ordered_json toJson(const host::PropertyInfo& property)
{
    ordered_json json = {{"name", property.name},
                         {"type", property.typeText},
                         {"readOnly", property.isReadOnly},
                         {"flags", property.flags},
                         {"access", property.getterAccess == host::Access::field ? "field" : "function"}};
    if (!property.group.empty()) json["group"] = property.group;
    return json;
}

ordered_json toJson(const host::MethodInfo& method)
{
    return {
        {"declaration", method.text}, {"indexedProperty", method.setter != nullptr}, {"flags", method.flags}};
}

template <class Members>
ordered_json listToJson(const Members& members)
{
    ordered_json list = ordered_json::array();
    for (const auto& member : members) list.push_back(toJson(member));
    return list;
}

template <class Members>
ordered_json textsOf(const Members& members)
{
    ordered_json list = ordered_json::array();
    for (const auto& member : members) list.push_back(member.text);
    return list;
}

ordered_json toJson(const host::ClassInfo& info)
{
    return {{"name", info.name},
            {"super", info.superName},
            {"layout", info.layout},
            {"flags", info.flags},
            {"dataSize", info.dataSize},
            {"properties", listToJson(info.properties)},
            {"sharedProperties", listToJson(info.sharedProperties)},
            {"methods", listToJson(info.methods)},
            {"sharedMethods", listToJson(info.sharedMethods)},
            {"events", textsOf(info.events)},
            {"constants", textsOf(info.constants)}};
}

void printProperties(const char* title, const std::vector<host::PropertyInfo>& properties)
{
    if (properties.empty()) return;
    fmt::print("  {}\n", title);
    for (const auto& property : properties)
        fmt::print("    {} as {} ({})\n", property.name, property.typeText, accessText(property));
}

template <class Members>
void printTexts(const char* title, const Members& members)
{
    if (members.empty()) return;
    fmt::print("  {}\n", title);
    for (const auto& member : members) fmt::print("    {}\n", member.text);
}

void printClass(const host::ClassInfo& info)
{
    fmt::print("{}\n", info.name);
    printProperties("Properties", info.properties);
    printProperties("Shared properties", info.sharedProperties);
    printTexts("Methods", info.methods);
    printTexts("Shared methods", info.sharedMethods);
    printTexts("Events", info.events);
    printTexts("Constants", info.constants);
}

void printSummary(const host::ClassInfo& info)
{
    fmt::print(
        "{:<24} {:>3} properties  {:>3} methods  {:>3} shared methods  {:>2} events  {:>3} constants\n",
        info.name, info.properties.size(), info.methods.size(), info.sharedMethods.size(), info.events.size(),
        info.constants.size());
}

void listClasses(const host::Host& host, const ClassesOptions& options)
{
    if (options.name.empty()) {
        if (options.isJson) {
            ordered_json all = ordered_json::array();
            for (const host::ClassInfo* info : host.pluginClasses()) all.push_back(toJson(*info));
            fmt::print("{}\n", all.dump(2));
        } else {
            for (const host::ClassInfo* info : host.pluginClasses()) printSummary(*info);
        }
        return;
    }
    const host::ClassInfo* info = host.findClass(options.name);
    if (!info || info->isBuiltIn)
        throw Failure(
            fmt::format("the library has no class {}; `kvx classes` lists those it has", options.name));
    if (options.isJson)
        fmt::print("{}\n", toJson(*info).dump(2));
    else
        printClass(*info);
}

} // namespace

void addClassesCommand(CLI::App& app, Action& action)
{
    auto options = std::make_shared<ClassesOptions>();
    CLI::App* command = app.add_subcommand("classes", "Print what the library registered");
    command->add_option("name", options->name, "One class, with all its members")->type_name("NAME");
    command->add_flag("--json", options->isJson, "As JSON");
    addLibraryOptions(*command, options->library);
    command->callback([options, &action] {
        action = [options] {
            Library library(options->library);
            listClasses(library.host(), *options);
            return reportLeaks(library, 0);
        };
    });
}

} // namespace kvx
