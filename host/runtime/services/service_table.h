// The table of the host's services: name, function, host versions.
//
// - Every version has the services that access values through their records.
// - Version 2012.0 adds access to text without records ("REALBuildStringWithEncoding", "PluginGetStringData",
//   "StringGetCString") and to the methods of the host's language ("REALLoadGlobalMethod").
// - Version 2013.0 adds services for one type each: "PluginIntegerArrayInsertProc", "IntegerToVariant",
//   "REALSetPropValueInteger", … The older names stay.
// - Version 2016.0 ends direct access: readable records, and the services "RuntimeArrayDirectGet…".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

struct Service {
    const char* name;
    void* function;     ///< C function that the resolver returns
    std::size_t* calls; ///< number of calls since the last resetServiceCalls()
    double first;       ///< first version with the service; 0 for all versions
    double last;        ///< first version without the service; infinity if all later versions have it
};

struct ServiceTable {
    const Service* rows;
    std::size_t count;
    const Service* begin() const { return rows; }
    const Service* end() const { return rows + count; }
};

/// All services, in the order in which a plug-in looks them up. The functions run on the main thread only; a
/// call on another thread is refused, and noted as a misuse. No function throws.
/// [any]
ServiceTable serviceTable();

/// The service of that name in a host of that version; null if the version does not have the service.
/// [any]
const Service* findService(std::string_view name, double version);

/// The resolver that the plug-in gets: the C function of a service of the current host. Null for an unknown
/// or withheld name, and without a host.
/// [main]
void* resolveService(const char* name);

/// The number of calls to a service since the last resetServiceCalls(). Throws ProgramError if no host
/// version has a service of that name. [main]
std::size_t serviceCalls(const std::string& name);
void resetServiceCalls();

} // namespace host
