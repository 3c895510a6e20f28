#include "host/runtime/services/resolver.h"

#include "host/runtime/services/service_table.h"
#include "host/runtime/support/options.h"
#include "host/runtime/support/per_host.h"

#include <fmt/format.h>

#include <algorithm>

namespace host {

std::size_t ServiceLog::lookupsOf(std::string_view name) const
{
    const auto hasName = [&](const Lookup& lookup) { return lookup.name == name; };
    return static_cast<std::size_t>(std::count_if(lookups.begin(), lookups.end(), hasName));
}

std::size_t ServiceLog::callsOf(const std::string& name) const
{
    const auto found = calls.find(name);
    return found == calls.end() ? 0 : found->second;
}

void* resolveService(const char* name)
{
    const auto* options = currentOrNull<Options>();
    if (!options || !name) return nullptr;
    const auto* service = options->withheld.count(name) != 0 ? nullptr : findService(name, options->version);
    auto& state = current<ServiceLogState>();
    if (state.isOn) state.log.lookups.push_back({name, service != nullptr});
    return service ? service->function : nullptr;
}

void logServices(bool isOn)
{
    auto& state = current<ServiceLogState>();
    state.isOn = isOn;
    if (!isOn) return;
    state.log = {};
    for (const auto& service : serviceTable()) state.callsBefore[service.name] = *service.calls;
}

const ServiceLog& serviceLog()
{
    auto& state = current<ServiceLogState>();
    if (!state.isOn) return state.log;
    for (const auto& service : serviceTable()) {
        const auto count = *service.calls - state.callsBefore[service.name];
        if (count > 0) state.log.calls[service.name] = count;
    }
    return state.log;
}

void resetServiceCalls()
{
    for (const auto& service : serviceTable()) *service.calls = 0;
}

void checkServiceName(const std::string& name)
{
    const auto rows = serviceTable();
    const auto hasName = [&](const Service& service) { return service.name == name; };
    if (std::none_of(rows.begin(), rows.end(), hasName))
        throw ProgramError(fmt::format("there is no service {} to withhold", name));
}

} // namespace host
