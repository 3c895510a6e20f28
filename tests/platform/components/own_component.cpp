#include "tests/platform/components/own_component.h"

#include <KVXPlatform/KVXPlatform.h>

#include <cstring>
#include <string>

namespace test {

OwnComponent& own()
{
    static OwnComponent component;
    return component;
}

void resetOwn() { own() = {}; }

ComponentResult ownEntry(ComponentParameters* parameters, Handle storage)
{
    Request request = {parameters->what, storage, {}};
    request.words.resize(parameters->paramSize / sizeof(long));
    const char* const words =
        reinterpret_cast<const char*>(parameters) + offsetof(ComponentParameters, params);
    if (!request.words.empty()) std::memcpy(request.words.data(), words, request.words.size() * sizeof(long));
    own().requests.push_back(request);
    const auto answer = own().answer; // copied, because the function may replace `answer`
    return answer ? answer(*parameters, storage) : 0;
}

Component registerOwn(OSType subType, UInt32 flags)
{
    ComponentDescription description = {'test', subType, 'mine', flags, 0};
    return RegisterComponent(&description, NewComponentRoutineUPP(ownEntry), 0, nullptr, nullptr, nullptr);
}

ComponentResult call(ComponentInstance instance, short what, std::vector<long> words)
{
    struct {
        ComponentParameters parameters;
        long more[64];
    } record = {};
    record.parameters.paramSize = static_cast<UInt8>(words.size() * sizeof(long));
    record.parameters.what = what;
    char* const arguments = reinterpret_cast<char*>(&record) + offsetof(ComponentParameters, params);
    if (!words.empty()) std::memcpy(arguments, words.data(), words.size() * sizeof(long));
    return DelegateComponentCall(&record.parameters, instance);
}

std::vector<Component> allThatFit(ComponentDescription pattern)
{
    std::vector<Component> found;
    for (Component c = FindNextComponent(nullptr, &pattern); c; c = FindNextComponent(c, &pattern))
        found.push_back(c);
    return found;
}

long alive(const char* kind)
{
    KVXLiveCount rows[32];
    const std::uint32_t kinds = KVXPlatformGetLiveCounts(rows, 32);
    for (std::uint32_t i = 0; i < kinds; ++i)
        if (std::string(rows[i].kind) == kind) return static_cast<long>(rows[i].count);
    return 0;
}

} // namespace test
