#include "tests/player/fresh_platform.h"

#include "plugin/process_state.h"
#include "tests/support/call_log.h"
#include "tests/support/service_caches.h"

#include <algorithm>

namespace test {

FreshPlatform::FreshPlatform()
{
    device_spy::reset();
    gResolver = fake::Host::resolve;
    rbversion_rbversion = host_.version;
    startHost();
}

FreshPlatform::~FreshPlatform()
{
    EXPECT_EQ(host_.faults(), fake::Notes());
    gResolver = nullptr;
}

void FreshPlatform::startHost(std::initializer_list<const char*> withheld)
{
    host_.provideAll();
    for (const char* const service : withheld) host_.withhold(service);
    host_.startOver();
    forgetServices();
}

int FreshPlatform::calls(const std::string& service) const { return spy::countOf(host_.calls(), service); }

int FreshPlatform::lookUps(const std::string& service) const
{
    const fake::Notes all = host_.lookUps();
    return static_cast<int>(std::count(all.begin(), all.end(), service));
}

fake::Notes FreshPlatform::heldValues() const
{
    fake::Notes held = host_.live();
    held.erase(
        std::remove_if(held.begin(), held.end(), [](const std::string& value) { return value[0] == 'm'; }),
        held.end());
    return held;
}

} // namespace test
