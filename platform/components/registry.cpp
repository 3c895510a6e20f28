// The list of components and the search in it. A component's handle is its place in the list, marked so that
// no instance's handle and no address of this machine is taken for one.
#include "platform/components/component.h"

#include <cstdint>
#include <vector>

namespace kvxplatform::components {
namespace {

// Made once and never again: built-in components do not come and go.
const std::vector<Component>& list()
{
    static const std::vector<Component>& components = *[] {
        auto* all = new std::vector<Component>;
        for (std::size_t i = 0; i < builtInCount; ++i)
            for (std::size_t row = 0; row < builtIns[i].count(); ++row)
                all->push_back(builtIns[i].describe(row));
        return all;
    }();
    return components;
}

constexpr std::uintptr_t mark = 0x00C0'0002;

::Component handleOf(std::size_t index)
{
    return reinterpret_cast<::Component>(mark + (static_cast<std::uintptr_t>(index) << 2));
}

std::size_t indexOf(::Component handle) // list().size() for a handle that names nothing
{
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    const std::size_t index = static_cast<std::size_t>((number - mark) >> 2);
    return number >= mark && (number - mark) % 4 == 0 && index < list().size() ? index : list().size();
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

const Component* find(::Component handle)
{
    const std::size_t index = indexOf(handle);
    return index < list().size() ? &list()[index] : nullptr;
}

::Component findNext(::Component previous, const ComponentDescription& looking)
{
    std::size_t index = 0;
    if (previous) index = indexOf(previous) + 1; // a handle that names nothing is behind the end
    for (; index < list().size(); ++index)
        if (matches(looking, list()[index].description)) return handleOf(index);
    return nullptr;
}

UInt32 count(const ComponentDescription& looking)
{
    UInt32 found = 0;
    for (const Component& component : list()) found += matches(looking, component.description);
    return found;
}

} // namespace kvxplatform::components
