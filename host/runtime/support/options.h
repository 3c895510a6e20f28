// The program's choices for a host.
#pragma once

#include <set>
#include <string>

namespace host {

struct Options {
    double version = 2016.0;            ///< host version; decides services, class layout and readable records
    bool isBuiltProgram = true;         ///< result of "REALinRuntime"; false: the development environment
    std::set<std::string> withheld;     ///< names of services that the resolver does not find
    bool isStringDataTerminated = true; ///< whether the data of "PluginGetStringData" ends with a zero byte
    bool isArrayStorageReadable = true; ///< false: an array's eighth word is null, as in some older hosts

    /// The host version that the plug-in sees: 0.0 while "REALGetRBVersion" is withheld.
    double visibleVersion() const { return withheld.count("REALGetRBVersion") != 0 ? 0.0 : version; }

    /// Whether the plug-in may read the words of string and array records: before host version 2016.0.
    bool areRecordsReadable() const { return visibleVersion() < 2016.0; }
};

} // namespace host
