// The property family's four targets: their six members each, with arguments that differ from position to
// position, and the platform calls that these must make, as the spy writes them.
#pragma once

#include "tests/coreaudio/subject.h"

#include <functional>

namespace subject {

struct Target {
    std::string name; ///< the beginning of its members' and its platform calls' names

    // The members. The arguments that name the property are the target's own.
    std::function<void(Object, Block when, Text data)> setString;
    std::function<void(Object, Block when, Block data, HostInteger offset, HostInteger length)> setMemory;
    std::function<void(Object, HostInteger* size, HostBoolean* writeable)> getInfo;
    std::function<Text(Object)> getString;
    std::function<Block(Object)> getMemory;
    std::function<Text(Object)> getCFString;

    // What the platform must see. `when`, `data` and `buffer` are as the spy shows them.
    std::function<std::string(const std::string& writable)> infoCall;
    std::function<std::string(UInt32 size, const std::string& buffer)> getCall;
    std::function<std::string(const std::string& when, UInt32 size, const std::string& data)> setCall;

    bool hasWhen;
    bool hasSelectorText;
    /// The device's member alone keeps a failed info call to itself.
    bool storesInfoErrorOfCFString;

    std::string infoFunction() const { return name + "GetPropertyInfo"; }
    std::string getFunction() const { return name + "GetProperty"; }
    std::string setFunction() const { return name + "SetProperty"; }
};

/// All four. `selector` is the text for those that take one.
std::vector<Target> targets(Text selector);

constexpr const char* selectorText = "abcd"; ///< 0x61626364 to the platform

} // namespace subject
