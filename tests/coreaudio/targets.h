// The four targets of the property family: for each target, calls of its six members with arguments that
// differ by position, and the expected platform calls as the spy records them.
#pragma once

#include "tests/coreaudio/subject.h"

#include <functional>

namespace subject {

struct Target {
    std::string name; ///< name prefix of the target's members and platform functions

    // Calls of the six members. Each target adds the arguments that select the property.
    std::function<void(Object, Block when, Text data)> setString;
    std::function<void(Object, Block when, Block data, HostInteger offset, HostInteger length)> setMemory;
    std::function<void(Object, HostInteger* size, HostBoolean* writeable)> getInfo;
    std::function<Text(Object)> getString;
    std::function<Block(Object)> getMemory;
    std::function<Text(Object)> getCFString;

    // Texts of the expected platform calls. `when`, `data` and `buffer` are the spy's names of those
    // arguments.
    std::function<std::string(const std::string& writable)> infoCall;
    std::function<std::string(UInt32 size, const std::string& buffer)> getCall;
    std::function<std::string(const std::string& when, UInt32 size, const std::string& data)> setCall;

    bool hasWhen;
    bool hasSelectorText;
    /// Whether the CFString getter stores the status of a failed info call: true for all targets but devices.
    bool storesInfoErrorOfCFString;

    std::string infoFunction() const { return name + "GetPropertyInfo"; }
    std::string getFunction() const { return name + "GetProperty"; }
    std::string setFunction() const { return name + "SetProperty"; }
};

/// All four targets. `selector` is the text for the targets whose selector is a text.
std::vector<Target> targets(Text selector);

constexpr const char* selectorText = "abcd"; ///< selector text whose code is 0x61626364

} // namespace subject
