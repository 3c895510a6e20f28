#include "host/kvx/play/equaliser_curve.h"

#include "host/kvx/text/failure.h"
#include "host/kvx/text/number_text.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <strings.h>
#include <vector>

namespace kvx {
namespace {

// clang-format off
// Band centres, Hz: 20 25 31.5 | 40 50 63 80 | 100 125 160 | 200 250 315 400 | 500 630 800 | 1k 1.25k 1.6k | 2k 2.5k 3.15k
//                   4k | 5k 6.3k 8k | 10k 12.5k 16k 20k
constexpr std::initializer_list<NamedCurve> curves = {
    {"flat",      "every band at 0 dB: leaves the sound unchanged",
     {0,0,0, 0,0,0,0, 0,0,0, 0,0,0,0, 0,0,0, 0,0,0, 0,0,0, 0, 0,0,0, 0,0,0,0}},
    {"bass",      "more below 200 Hz",
     {6,6,6, 6,6,6,6, 5,4,3, 2,1,0,0, 0,0,0, 0,0,0, 0,0,0, 0, 0,0,0, 0,0,0,0}},
    {"treble",    "more above 3 kHz",
     {0,0,0, 0,0,0,0, 0,0,0, 0,0,0,0, 0,0,0, 0,0,0, 0,1,2, 3, 4,5,6, 6,6,6,6}},
    {"loudness",  "more at both ends, for listening at a low level",
     {8,8,7, 7,6,6,5, 4,3,2, 1,1,0,0, 0,0,0, 0,0,0, 0,0,0, 1, 1,2,3, 4,5,5,5}},
    {"voice",     "speech forward, rumble and hiss back",
     {-12,-12,-12, -9,-9,-6,-6, -3,-3,0, 0,0,0,0, 0,1,2, 3,3,4, 4,4,3, 2, 1,0,-1, -3,-4,-6,-6}},
    {"telephone", "300 Hz to 3.4 kHz only",
     {-20,-20,-20, -20,-20,-20,-20, -18,-15,-12, -8,-4,0,0, 0,0,0, 0,0,0, 0,0,0, -6, -12,-18,-20, -20,-20,-20,-20}},
    {"warm",      "a little more below, a little less above",
     {2,2,2, 3,3,3,3, 3,2,2, 2,1,1,0, 0,0,0, 0,0,0, -1,-1,-1, -2, -2,-2,-3, -3,-3,-4,-4}},
};
// clang-format on

// A test measures the figure.
constexpr const char* bandNote =
    "\nNeighbouring bands add up: two at +12 dB give +14.9 dB at both centres, and a little less above 4 "
    "kHz.\n"
    "A list for --eq has one gain per band, in this order, with commas between the gains.\n";

std::string names()
{
    std::string text;
    for (const NamedCurve& curve : curves) text += (text.empty() ? "" : ", ") + std::string(curve.name);
    return text;
}

bool isNamed(std::string_view text, const char* name)
{
    return text.size() == std::char_traits<char>::length(name) &&
           strncasecmp(text.data(), name, text.size()) == 0;
}

} // namespace

std::initializer_list<NamedCurve> namedCurves() { return curves; }

Gains readGains(std::string_view text)
{
    for (const NamedCurve& curve : curves)
        if (isNamed(text, curve.name)) return curve.gains;

    const auto numbers = readReals(text);
    if (!numbers)
        throw WrongUsage(
            fmt::format("--eq: {} is neither a curve nor a list of gains; the curves are {}", text, names()));
    if (numbers->size() != bandCount)
        throw WrongUsage(
            fmt::format("--eq: {} gains are given and the equaliser has {} bands; give one gain per band",
                        numbers->size(), bandCount));
    for (double gain : *numbers)
        if (gain < lowestGain || gain > highestGain)
            throw WrongUsage(fmt::format("--eq: {} dB is out of range; gains go from {} to {} dB", gain,
                                         lowestGain, highestGain));
    Gains gains;
    std::copy(numbers->begin(), numbers->end(), gains.begin());
    return gains;
}

std::string formatNamedCurves()
{
    std::vector<TableColumn> columns = {{"Hz", TableColumn::right, 0, 0}};
    for (const NamedCurve& curve : curves) columns.push_back({curve.name, TableColumn::right, 0, 0});
    std::vector<std::vector<std::string>> rows;
    for (std::size_t band = 0; band < bandCount; ++band) {
        rows.push_back({fmt::format("{}", bandCentres[band])});
        for (const NamedCurve& curve : curves) rows.back().push_back(fmt::format("{}", curve.gains[band]));
    }
    std::string text;
    for (const NamedCurve& curve : curves) text += fmt::format("{:<10} {}\n", curve.name, curve.purpose);
    return text + "\nGains in dB by the centre of the band in Hz:\n\n" + layOutTable(columns, rows, 0) +
           bandNote;
}

} // namespace kvx
