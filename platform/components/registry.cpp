#include "platform/components/registry.h"

#include "platform/components/instances.h"
#include "platform/components/registered.h"

#include <cstdint>
#include <iterator>

namespace kvxplatform::components {
namespace {

// The handle of a built-in component is derived from the component's index in the list. The offset ensures
// that the handle equals no other handle and no address of this machine.
constexpr std::uintptr_t firstHandle = 0x00C0'0002;
constexpr std::size_t noIndex = SIZE_MAX;

/// Numbers of open instances, one for each built-in component. Components past the end of this array have
/// no such number.
std::atomic<long> builtInInstances[64] = {};

::Component handleOf(std::size_t index)
{
    return reinterpret_cast<::Component>(firstHandle + (static_cast<std::uintptr_t>(index) << 2));
}

std::size_t indexOf(::Component handle)
{
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    return number >= firstHandle && (number - firstHandle) % 4 == 0 ? (number - firstHandle) >> 2 : noIndex;
}

/// Get the built-in component at an index of the list.
/// Returns  false past the end of the list.
bool at(std::size_t index, Component& out)
{
    std::size_t rest = index;
    for (std::size_t family = 0; family < builtInCount; ++family) {
        const std::size_t count = builtIns[family].count();
        if (rest < count) {
            out = builtIns[family].describe(rest);
            if (index < std::size(builtInInstances)) out.instances = &builtInInstances[index];
            return true;
        }
        rest -= count;
    }
    return false;
}

bool matches(const ComponentDescription& pattern, const ComponentDescription& component)
{
    const auto fits = [](UInt32 expected, UInt32 value) { return expected == 0 || expected == value; };
    return fits(pattern.componentType, component.componentType) &&
           fits(pattern.componentSubType, component.componentSubType) &&
           fits(pattern.componentManufacturer, component.componentManufacturer) &&
           ((pattern.componentFlags ^ component.componentFlags) & pattern.componentFlagsMask) == 0;
}

} // namespace

bool find(::Component handle, Component& out)
{
    const std::size_t index = indexOf(handle);
    return (index != noIndex && at(index, out)) || findRegistered(handle, out);
}

::Component findNext(::Component previous, const ComponentDescription& pattern)
{
    Component component{};
    if (previous && !find(previous, component)) return nullptr;
    const bool isPastBuiltIns = component.self != nullptr;
    for (std::size_t index = previous ? indexOf(previous) + 1 : 0; !isPastBuiltIns && at(index, component);
         ++index)
        if (matches(pattern, component.description)) return handleOf(index);
    for (const Component& own : registeredAfter(isPastBuiltIns ? previous : nullptr))
        if (matches(pattern, own.description)) return own.self;
    return nullptr;
}

OSStatus open(::Component handle, ComponentInstance& out)
{
    out = nullptr;
    Component component{};
    return find(handle, component) ? makeInstance(component, out) : OSStatus{invalidComponentID};
}

long countInstances(::Component handle)
{
    const std::size_t index = indexOf(handle);
    Component component{};
    if (index == noIndex || !at(index, component)) return countRegisteredInstances(handle);
    return component.instances ? component.instances->load() : 0;
}

} // namespace kvxplatform::components
