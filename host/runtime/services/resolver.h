// The resolver that the plug-in gets, and the log of its use.
// All functions: [main].
#pragma once

#include "abi/entry_point.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// The names that the plug-in looked up, and the number of calls to each service.
struct ServiceLog {
    struct Lookup {
        std::string name;
        bool isKnown;
    };
    std::vector<Lookup> lookups; ///< every look-up, in order
    std::map<std::string, std::size_t> calls;

    std::size_t lookupsOf(std::string_view name) const;
    std::size_t callsOf(const std::string& name) const;
};

/// The log of the current host.
struct ServiceLogState {
    bool isOn = false;
    ServiceLog log;
    std::map<std::string, std::size_t> callsBefore; ///< the services' call counts at the start of the log
};

/// Find a service of the current host for the plug-in. Null for an unknown or withheld name, and without a
/// host.
void* resolveService(const char* name);

/// Start an empty log, or stop the log.
void logServices(bool isOn);

const ServiceLog& serviceLog();

/// Set the call counts of all services to 0.
void resetServiceCalls();

/// Throws ProgramError if no service of any host version has the name.
void checkServiceName(const std::string& name);

} // namespace host
