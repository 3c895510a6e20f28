// The table of the host's services: the name, the function, and the host versions that have the service.
//
// - Every version has the basic services, for example "REALBuildString" and "newMemoryBlock".
// - Version 2012.0 adds access to text without reading REALstringStruct ("REALBuildStringWithEncoding",
//   "PluginGetStringData", "StringGetCString") and to the methods of the host's language
//   ("REALLoadGlobalMethod").
// - Version 2013.0 adds services for one type each: "PluginIntegerArrayInsertProc", "IntegerToVariant",
//   "REALSetPropValueInteger", … The older services stay.
// - Version 2016.0 ends direct access: the plug-in may no longer read REALstringStruct and REALarrayStruct,
//   and the services "RuntimeArrayDirectGet…" are removed.
#pragma once

#include <initializer_list>
#include <string_view>

namespace host {

struct Service {
    const char* name;
    void* function;   ///< C function that the plug-in gets from the resolver
    double first;     ///< first host version that has the service; 0 if the oldest has it
    double removedIn; ///< first host version that no longer has the service; or infinity
};

/// All services. Their functions throw no exception and run on the main thread only; a call on another thread
/// has no effect, returns 0, false or null, and is noted as a misuse.
/// [any]
std::initializer_list<Service> serviceTable();

/// Find the service `name` in a host of version `version`; null if that version lacks the service.
/// [any]
const Service* findService(std::string_view name, double version);

/// The function with which the plug-in looks up a service. Return the C function of a service of the current
/// host; null for an unknown or withheld name, and if no host exists.
/// [main]
void* resolveService(const char* name);

/// Throw ProgramError unless some host version has a service of this name.
/// [any]
void checkServiceName(std::string_view name);

} // namespace host
