#include "host/kvx/text/codes.h"

#include "host/kvx/text/number_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>

namespace kvx {
namespace {

bool isPrintable(char c) { return c >= ' ' && c <= '~' && c != '\''; }

std::string_view withoutQuotes(std::string_view text)
{
    const bool isQuoted = text.size() > 2 && text.front() == '\'' && text.back() == '\'';
    return isQuoted ? text.substr(1, text.size() - 2) : text;
}

// clang-format off
constexpr std::initializer_list<StatusFact> facts = {
    {0,      "no error"},
    {-1,     "the library refused the call before any platform call"},
    {'stop', "the device is not running"},
    {'what', "unspecified error of the platform"},
    {'who?', "the object has no such property in this scope and element"},
    {'!siz', "the value has a wrong size for this property"},
    {'nope', "the operation or the value is not allowed"},
    {'!obj', "there is no such object"},
    {'!dev', "there is no such device"},
    {'!str', "there is no such stream"},
    {'unop', "the operation is not supported; the property may be read-only"},
    {'!dat', "the device does not have that format or rate"},
    {'!hog', "another process has exclusive access to the device"},
    {-4,     "the platform does not have that function"},
    {-50,    "an argument is invalid"},
    {-54,    "permission is missing"},
    {-108,   "there is not enough memory"},
    {-42,    "too many files are open"},
    {-43,    "there is no such file"},
    {-36,    "the file cannot be read"},
    {'wht?', "the file cannot be read, for an unspecified reason"},
    {'typ?', "the platform does not read files of this type"},
    {'fmt?', "the platform does not read the data format of the file"},
    {'pty?', "the file has no such property"},
    {'prm?', "there is no permission to read the file"},
    {'chk?', "the chunks of the file contradict each other"},
    {'dta?', "the file is damaged or is not a sound file"},
    {-10879, "the unit has no such property"},
    {-10878, "the unit has no such parameter"},
    {-10877, "the unit has no such element"},
    {-10876, "nothing is connected to the unit"},
    {-10875, "the unit cannot be initialised"},
    {-10874, "the unit was initialised for fewer frames per render call"},
    {-10868, "the unit does not support that format"},
    {-10867, "the unit is not initialised"},
    {-10866, "the unit does not have this scope"},
    {-10865, "the property of the unit is read-only"},
    {-10863, "the unit cannot do that now"},
    {-10861, "the units cannot be connected like this"},
    {-10860, "the graph has no such node"},
    {-10851, "the unit does not accept that value"},
    {-10849, "the unit is initialised, so this can no longer be changed"},
};
// clang-format on

} // namespace

std::string charactersOf(Code code)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift & 0xFF);
    return text;
}

std::string formatCode(Code code)
{
    const std::string text = charactersOf(code);
    return std::all_of(text.begin(), text.end(), isPrintable) ? fmt::format("'{}'", text)
                                                              : fmt::format("0x{:08X}", code);
}

std::optional<Code> readCode(std::string_view text)
{
    std::string characters(withoutQuotes(text));
    if (characters.empty() || characters.size() > 4) return std::nullopt;
    characters.resize(4, ' ');
    Code code = 0;
    for (const char c : characters) code = code << 8 | static_cast<unsigned char>(c);
    return code;
}

std::optional<Code> readCodeOrNumber(std::string_view text)
{
    const std::optional<Code> code = hasHexPrefix(text) ? std::nullopt : readCode(text);
    return code ? code : readNumber(text);
}

std::initializer_list<StatusFact> statusFacts() { return facts; }

std::string formatStatus(Status status)
{
    const auto* found = std::find_if(std::begin(facts), std::end(facts),
                                     [status](const StatusFact& fact) { return fact.status == status; });
    const char* const meaning = found == std::end(facts) ? "unknown status" : found->meaning;
    const std::string code = formatCode(static_cast<Code>(status));
    return code.front() == '\'' ? fmt::format("{} ({}): {}", code, status, meaning)
                                : fmt::format("{}: {}", status, meaning);
}

} // namespace kvx
