// The list of components and the search in it: the built-in ones, then those of programs. The handle of a
// built-in one is its place in the list, marked so that no other handle and no address of this machine is
// taken for one.
#include "platform/components/component.h"
#include "platform/components/registered.h"

#include <cstdint>
#include <iterator>

namespace kvxplatform::components {
namespace {

constexpr std::uintptr_t mark = 0x00C0'0002;
constexpr std::size_t nowhere = SIZE_MAX;

/// How many instances of each are open. Those behind the end are not counted.
std::atomic<long> builtInInstances[64] = {};

::Component handleOf(std::size_t index)
{
    return reinterpret_cast<::Component>(mark + (static_cast<std::uintptr_t>(index) << 2));
}

std::size_t indexOf(::Component handle)
{
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    return number >= mark && (number - mark) % 4 == 0 ? (number - mark) >> 2 : nowhere;
}

/// The built-in component at a place in the list; false behind its end.
bool at(std::size_t index, Component& out)
{
    const std::size_t place = index;
    for (std::size_t family = 0; family < builtInCount; ++family) {
        const std::size_t count = builtIns[family].count();
        if (index < count) {
            out = builtIns[family].describe(index);
            if (place < std::size(builtInInstances)) out.instances = &builtInInstances[place];
            return true;
        }
        index -= count;
    }
    return false;
}

bool matches(const ComponentDescription& looking, const ComponentDescription& found)
{
    const auto fits = [](UInt32 wanted, UInt32 there) { return wanted == 0 || wanted == there; };
    return fits(looking.componentType, found.componentType) &&
           fits(looking.componentSubType, found.componentSubType) &&
           fits(looking.componentManufacturer, found.componentManufacturer) &&
           ((looking.componentFlags ^ found.componentFlags) & looking.componentFlagsMask) == 0;
}

} // namespace

bool find(::Component handle, Component& out)
{
    const std::size_t index = indexOf(handle);
    return (index != nowhere && at(index, out)) || findRegistered(handle, out);
}

::Component findNext(::Component previous, const ComponentDescription& looking)
{
    Component component{};
    if (previous && !find(previous, component)) return nullptr;
    const bool isBehindBuiltIns = component.self != nullptr;
    for (std::size_t index = previous ? indexOf(previous) + 1 : 0; !isBehindBuiltIns && at(index, component);
         ++index)
        if (matches(looking, component.description)) return handleOf(index);
    for (const Component& own : registeredBehind(isBehindBuiltIns ? previous : nullptr))
        if (matches(looking, own.description)) return own.self;
    return nullptr;
}

UInt32 count(const ComponentDescription& looking)
{
    UInt32 found = 0;
    Component component{};
    for (std::size_t index = 0; at(index, component); ++index)
        found += matches(looking, component.description);
    for (const Component& own : registeredBehind(nullptr)) found += matches(looking, own.description);
    return found;
}

long countInstances(::Component handle)
{
    const std::size_t index = indexOf(handle);
    Component component{};
    if (index == nowhere || !at(index, component)) return countRegistered(handle);
    return component.instances ? component.instances->load() : 0;
}

} // namespace kvxplatform::components
