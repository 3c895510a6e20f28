#include "host/kvx/text/status_text.h"

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
    {-42,             "too many files are open"},
    {-43,             "there is no such file"},
    {-36,             "the file cannot be read"},
    {'wht?',          "the file cannot be read, and the platform does not say why"},
    {'typ?',          "the file is of no type that the platform reads"},
    {'fmt?',          "the file holds its sound in a form that the platform does not read"},
    {'pty?',          "the file has no such property"},
    {'prm?',          "the file may not be read"},
    {'chk?',          "the file's parts do not fit together"},
    {'dta?',          "the file is damaged, or no sound file at all"},
    {-10879,          "the unit has no such property"},
    {-10878,          "the unit has no such parameter"},
    {-10877,          "the unit has no such element"},
    {-10876,          "nothing is connected to the unit"},
    {-10875,          "the unit cannot be made ready"},
    {-10874,          "more frames are asked of the unit than it was made ready for"},
    {-10868,          "the unit does not take that format"},
    {-10867,          "the unit is not ready yet"},
    {-10866,          "the unit has nothing of that in this scope"},
    {-10865,          "the property of the unit can only be read"},
    {-10863,          "the unit cannot do that now"},
    {-10861,          "the units cannot be connected in that way"},
    {-10860,          "the graph has no such node"},
    {-10851,          "the unit does not take that value"},
    {-10849,          "the unit is ready already, and that can no longer be changed"},
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
