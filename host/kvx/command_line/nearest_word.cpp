#include "host/kvx/command_line/nearest_word.h"

#include <algorithm>
#include <cstddef>

namespace kvx {
namespace {

/// The number of edits (see nearestWord) that make `b` from `a`: the optimal string alignment distance.
std::size_t editsBetween(std::string_view a, std::string_view b)
{
    using Row = std::vector<std::size_t>;
    std::vector<Row> edits(a.size() + 1, Row(b.size() + 1)); // edits[i][j]: the first i letters of a, j of b
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                edits[i][j] = i + j;
                continue;
            }
            edits[i][j] = std::min(
                {edits[i - 1][j] + 1, edits[i][j - 1] + 1, edits[i - 1][j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
        }
    return edits[a.size()][b.size()];
}

/// The length without the dashes of an option, which are the same in all options.
std::size_t lettersOf(std::string_view word)
{
    return word.size() - std::min(word.find_first_not_of('-'), word.size());
}

} // namespace

std::string nearestWord(std::string_view word, const std::vector<std::string>& words)
{
    std::string nearest;
    std::size_t fewest = 0;
    for (const std::string& each : words) {
        const std::size_t edits = editsBetween(word, each);
        if (edits * 3 > std::max(lettersOf(word), lettersOf(each)) || (!nearest.empty() && edits >= fewest))
            continue;
        nearest = each;
        fewest = edits;
    }
    return nearest;
}

} // namespace kvx
