// The four targets of the property family: six members each, called with arguments that differ by position,
// and the expected platform calls in the spy's notation.
#pragma once

#include "tests/coreaudio/subject.h"

#include <functional>

namespace subject {

struct Target {
    std::string name; ///< the prefix of its members and platform functions

    // The members. Each target adds the arguments that select the property.
    std::function<void(Object, Block when, Text data)> setString;
    std::function<void(Object, Block when, Block data, HostInteger offset, HostInteger length)> setMemory;
    std::function<void(Object, HostInteger* size, HostBoolean* writeable)> getInfo;
    std::function<Text(Object)> getString;
    std::function<Block(Object)> getMemory;
    std::function<Text(Object)> getCFString;

    // The expected platform calls. `when`, `data` and `buffer` are the spy's names.
    std::function<std::string(const std::string& writable)> infoCall;
    std::function<std::string(UInt32 size, const std::string& buffer)> getCall;
    std::function<std::string(const std::string& when, UInt32 size, const std::string& data)> setCall;

    bool hasWhen;
    bool hasSelectorText;
    /// True for all but devices.
    bool storesInfoErrorOfCFString;

    std::string infoFunction() const { return name + "GetPropertyInfo"; }
    std::string getFunction() const { return name + "GetProperty"; }
    std::string setFunction() const { return name + "SetProperty"; }
};

/// All four targets. `selector` is the text for those that have one.
std::vector<Target> targets(Text selector);

constexpr const char* selectorText = "abcd"; ///< as a number 0x61626364

} // namespace subject
