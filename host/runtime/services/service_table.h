// The services by which the plug-in reaches the host: one table of facts (name, function, versions).
//
// Which versions have a service:
//   - from the beginning: everything that reads and makes values through their records;
//   - from 2012.0: text without records ("REALBuildStringWithEncoding", "PluginGetStringData" and its
//   disposer,
//     "StringGetCString") and the host's own methods ("REALLoadGlobalMethod");
//   - from 2013.0: array, variant and property services that name the type they deal in
//     ("PluginIntegerArrayInsertProc", "IntegerToVariant", "REALSetPropValueInteger" and the like);
//   - the older names of those stay, so that a plug-in for both finds either; but those that hand out direct
//     array access ("RuntimeArrayDirectGet...") end before 2016.0, as the readable records do.
#pragma once

#include <cstddef>
#include <string_view>

namespace host {

struct Service {
    const char* name;
    void* function;     ///< what the resolver answers
    std::size_t* calls; ///< counted on each call, since the current host was made
    double first;       ///< the first version that has it; 0: all
    double last;        ///< the version from which it is gone again; infinity: never
};

struct ServiceTable {
    const Service* rows;
    std::size_t count;
    const Service* begin() const { return rows; }
    const Service* end() const { return rows + count; }
};

/// All services, in the order in which a plug-in meets them. The functions are plain C, for the main thread,
/// never throw, and answer null, 0 or false to what they cannot do.
ServiceTable serviceTable();

/// The service of that name in a host of that version; null where it has none.
const Service* findService(std::string_view name, double version);

} // namespace host
