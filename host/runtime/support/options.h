// The options with which a program makes a host: version, withheld services, layout of strings and arrays.
#pragma once

#include <set>
#include <string>

namespace host {

struct Options {
    double version = 2016.0;        ///< host version; decides the services, class layouts and direct access
    bool isBuiltProgram = true;     ///< result of "REALinRuntime"; false in the development environment
    std::set<std::string> withheld; ///< names of services that the plug-in cannot look up
    bool isStringDataTerminated = true; ///< whether a zero byte follows the text of "PluginGetStringData"
    bool isArrayStorageReadable = true; ///< false: REALarrayStruct::elements is null, as in some older hosts

    /// The host version that the plug-in sees: 0.0 if the service "REALGetRBVersion" is withheld.
    double visibleVersion() const { return withheld.count("REALGetRBVersion") != 0 ? 0.0 : version; }

    /// Whether the plug-in may read REALstringStruct and REALarrayStruct: only before host version 2016.0.
    bool allowsDirectAccess() const { return visibleVersion() < 2016.0; }
};

} // namespace host
