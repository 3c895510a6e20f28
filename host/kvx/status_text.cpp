#include "host/kvx/status_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace kvx {
namespace {

// clang-format off
constexpr StatusFact facts[] = {
    {0,               "all is well"},
    {-1,              "the library gave up before it asked the platform"},
    {'stop',          "the device is not running"},
    {'what',          "the platform failed and does not say why"},
    {unknownProperty, "the object has no such property in this scope and element"},
    {'!siz',          "the value is not as long as this property's values are"},
    {'nope',          "the platform does not allow that here, or not that value"},
    {'!obj',          "there is no such object"},
    {'!dev',          "there is no such device"},
    {'!str',          "there is no such stream"},
    {'unop',          "that is not supported; the property may be one that can only be read"},
    {'!dat',          "the device does not have that format or rate"},
    {'!hog',          "another process has the device for itself"},
    {-4,              "the platform does not have that function"},
    {-50,             "an argument is not one that the platform takes"},
    {-54,             "permission is missing"},
    {-108,            "there is not enough memory"},
};
// clang-format on

} // namespace

StatusFacts statusFacts() { return {facts, std::size(facts)}; }

std::string printStatus(Status status)
{
    const auto* found = std::find_if(std::begin(facts), std::end(facts),
                                     [status](const StatusFact& fact) { return fact.status == status; });
    const char* meaning =
        found == std::end(facts) ? "a status of which nothing is known here" : found->meaning;
    const std::string code = printCode(Code(status));
    return code.front() == '\'' ? fmt::format("{} ({}): {}", code, status, meaning)
                                : fmt::format("{}: {}", status, meaning);
}

} // namespace kvx
