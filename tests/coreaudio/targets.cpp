#include "tests/coreaudio/targets.h"

#include <cstdint>
#include <cstdio>

namespace subject {

namespace {

/// Host Integer with the bit pattern `bits`.
HostInteger integer(std::uint32_t bits) { return static_cast<std::int32_t>(bits); }

std::string hex(std::uint32_t number)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", number);
    return text;
}

/// A target with its getters, whose leading arguments are `where`.
template <class... Where>
Target readable(const std::string& name, Where... where)
{
    Target target = {};
    target.name = name;
    target.getInfo = [=](Object object, HostInteger* size, HostBoolean* writeable) {
        members.call<void>(name + "GetPropertyInfo", object, where..., size, writeable);
    };
    target.getString = [=](Object object) {
        return members.call<Text>(name + "GetPropertyString", object, where...);
    };
    target.getMemory = [=](Object object) {
        return members.call<Block>(name + "GetPropertyMemory", object, where...);
    };
    target.getCFString = [=](Object object) {
        return members.call<Text>(name + "GetPropertyCFString", object, where...);
    };
    return target;
}

/// Set the expected platform calls of the getters; `lead` is the text of the arguments before the size.
void expectReads(Target& target, const std::string& lead)
{
    const std::string name = target.name;
    target.infoCall = [=](const std::string& writable) {
        return name + "GetPropertyInfo(" + lead + ", size 0, writable " + writable + ")";
    };
    target.getCall = [=](UInt32 size, const std::string& buffer) {
        return name + "GetProperty(" + lead + ", size " + std::to_string(size) + ", " + buffer + ")";
    };
}

constexpr std::uint32_t channel = 0xFFFFFFF9; // bit pattern of the host Integer -7
constexpr HostBoolean isInput = 1;
constexpr std::uint32_t selectorCode = 0x61626364;

Target device(Text selector)
{
    constexpr std::uint32_t id = 0x80000011;
    Target target = readable("AudioDevice", integer(id), integer(channel), isInput, selector);
    target.setString = [=](Object object, Block when, Text data) {
        members.call<void>("AudioDeviceSetPropertyString", object, integer(id), when, integer(channel),
                           isInput, selector, data);
    };
    target.setMemory = [=](Object object, Block when, Block data, HostInteger offset, HostInteger length) {
        members.call<void>("AudioDeviceSetPropertyMemory", object, integer(id), when, integer(channel),
                           isInput, selector, data, offset, length);
    };
    const std::string where = hex(channel) + ", 1, " + hex(selectorCode);
    expectReads(target, hex(id) + ", " + where);
    target.setCall = [=](const std::string& when, UInt32 size, const std::string& data) {
        return "AudioDeviceSetProperty(" + hex(id) + ", " + when + ", " + where + ", " + hex(size) + ", " +
               data + ")";
    };
    target.hasWhen = target.hasSelectorText = true;
    target.storesInfoErrorOfCFString = false;
    return target;
}

Target stream(Text selector)
{
    constexpr std::uint32_t id = 0x90000012;
    Target target = readable("AudioStream", integer(id), integer(channel), selector);
    target.setString = [=](Object object, Block when, Text data) {
        members.call<void>("AudioStreamSetPropertyString", object, integer(id), when, integer(channel),
                           selector, data);
    };
    target.setMemory = [=](Object object, Block when, Block data, HostInteger offset, HostInteger length) {
        members.call<void>("AudioStreamSetPropertyMemory", object, integer(id), when, integer(channel),
                           selector, data, offset, length);
    };
    const std::string where = hex(channel) + ", " + hex(selectorCode);
    expectReads(target, hex(id) + ", " + where);
    target.setCall = [=](const std::string& when, UInt32 size, const std::string& data) {
        return "AudioStreamSetProperty(" + hex(id) + ", " + when + ", " + where + ", " + hex(size) + ", " +
               data + ")";
    };
    target.hasWhen = target.hasSelectorText = target.storesInfoErrorOfCFString = true;
    return target;
}

Target hardware(Text selector)
{
    Target target = readable("AudioHardware", selector);
    target.setString = [=](Object object, Block, Text data) {
        members.call<void>("AudioHardwareSetPropertyString", object, selector, data);
    };
    target.setMemory = [=](Object object, Block, Block data, HostInteger offset, HostInteger length) {
        members.call<void>("AudioHardwareSetPropertyMemory", object, selector, data, offset, length);
    };
    expectReads(target, hex(selectorCode));
    target.setCall = [=](const std::string&, UInt32 size, const std::string& data) {
        return "AudioHardwareSetProperty(" + hex(selectorCode) + ", " + hex(size) + ", " + data + ")";
    };
    target.hasSelectorText = target.storesInfoErrorOfCFString = true;
    return target;
}

Target unit()
{
    constexpr std::uint32_t handle = 0x7654320C, property = 0xFFFF0003, scope = 0x80000005,
                            element = 0xFFFFFFFE;
    Target target =
        readable("AudioUnit", integer(handle), integer(property), integer(scope), integer(element));
    target.setString = [=](Object object, Block, Text data) {
        members.call<void>("AudioUnitSetPropertyString", object, integer(handle), integer(property),
                           integer(scope), integer(element), data);
    };
    target.setMemory = [=](Object object, Block, Block data, HostInteger offset, HostInteger length) {
        members.call<void>("AudioUnitSetPropertyMemory", object, integer(handle), integer(property),
                           integer(scope), integer(element), data, offset, length);
    };
    const std::string lead =
        "handle " + hex(handle) + ", " + hex(property) + ", " + hex(scope) + ", " + hex(element) + ", ";
    target.infoCall = [=](const std::string& writable) {
        return "AudioUnitGetPropertyInfo(" + lead + "size 0, writable " + writable + ")";
    };
    // The platform's unit functions take the data before its size.
    target.getCall = [=](UInt32 size, const std::string& buffer) {
        return "AudioUnitGetProperty(" + lead + buffer + ", size " + std::to_string(size) + ")";
    };
    target.setCall = [=](const std::string&, UInt32 size, const std::string& data) {
        return "AudioUnitSetProperty(" + lead + data + ", " + hex(size) + ")";
    };
    target.storesInfoErrorOfCFString = true;
    return target;
}

} // namespace

std::vector<Target> targets(Text selector)
{
    return {device(selector), stream(selector), hardware(selector), unit()};
}

} // namespace subject
