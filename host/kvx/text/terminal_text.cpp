#include "host/kvx/text/terminal_text.h"

#include <sys/ioctl.h>
#include <utf8proc.h>

#include <algorithm>
#include <numeric>

namespace kvx {
namespace {

constexpr std::size_t gap = 2;    // number of blanks between two columns
constexpr std::size_t indent = 5; // indent of the line with cells that are too wide for their row
constexpr const char* ellipsis = "\xE2\x80\xA6";

struct Character {
    utf8proc_int32_t codePoint; ///< Unicode code point; -1: invalid UTF-8
    std::size_t bytes, width;
};

Character firstCharacter(std::string_view utf8)
{
    utf8proc_int32_t codePoint = -1;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(utf8.data()),
                                         static_cast<utf8proc_ssize_t>(utf8.size()), &codePoint);
    if (length <= 0) return {-1, 1, 1};
    return {codePoint, static_cast<std::size_t>(length),
            static_cast<std::size_t>(utf8proc_charwidth(codePoint))};
}

/// A column, and its width in the laid-out table.
struct Placed {
    const TableColumn* column;
    std::size_t index; ///< index of the column in a row
    std::size_t width;
};

std::size_t widthOf(const std::vector<Placed>& line)
{
    const std::size_t cells = std::accumulate(line.begin(), line.end(), std::size_t{0},
                                              [](std::size_t sum, const Placed& p) { return sum + p.width; });
    return cells + gap * (line.empty() ? 0 : line.size() - 1);
}

std::size_t minimumWidth(const Placed& placed)
{
    if (placed.column->minimumWidth == 0) return placed.width;
    const std::size_t least = std::max(placed.column->minimumWidth, displayWidth(placed.column->title));
    return std::min(least, placed.width);
}

std::size_t minimumWidthOf(std::vector<Placed> line)
{
    for (Placed& placed : line) placed.width = minimumWidth(placed);
    return widthOf(line);
}

/// The next column to move below the row; line.end() if no column may be moved.
std::vector<Placed>::iterator nextToMove(std::vector<Placed>& line)
{
    const auto found = std::max_element(line.begin(), line.end(), [](const Placed& a, const Placed& b) {
        return a.column->moveOrder < b.column->moveOrder;
    });
    return found == line.end() || found->column->moveOrder == 0 ? line.end() : found;
}

/// The widest column whose cells may still be cut; null if there is none.
Placed* widestToCut(std::vector<Placed>& line)
{
    Placed* widest = nullptr;
    for (Placed& placed : line)
        if (placed.width > minimumWidth(placed) && (!widest || placed.width > widest->width))
            widest = &placed;
    return widest;
}

std::string layOutLine(const std::vector<Placed>& line, const std::vector<std::string>& cells)
{
    std::string text;
    for (const Placed& placed : line) {
        const std::string cell = cutToWidth(cells[placed.index], placed.width);
        const std::string blanks(placed.width - displayWidth(cell), ' ');
        if (&placed != &line.front()) text += std::string(gap, ' ');
        text += placed.column->align == TableColumn::right ? blanks + cell : cell + blanks;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text + "\n";
}

/// Lay out the cells of one row that were moved below the row, as many per line as fit.
std::string layOutBelow(const std::vector<Placed>& below, const std::vector<std::string>& cells,
                        std::size_t width)
{
    std::string text, line;
    for (const Placed& placed : below) {
        if (cells[placed.index].empty()) continue;
        const std::string item = std::string(placed.column->title) + " " + cells[placed.index];
        if (!line.empty() && displayWidth(line) + gap + displayWidth(item) > width) {
            text += line + ",\n";
            line.clear();
        }
        line += line.empty() ? std::string(indent, ' ') + item : ", " + item;
        // The last terminal column stays free for a comma.
        line = cutToWidth(line, width > 0 ? width - 1 : 0);
    }
    return line.empty() ? text : text + line + "\n";
}

} // namespace

std::string plainText(std::string_view text)
{
    std::string plain;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const bool isPlain =
            character.codePoint >= 0 && utf8proc_category(character.codePoint) != UTF8PROC_CATEGORY_CC;
        plain += isPlain ? text.substr(0, character.bytes) : "?";
        text.remove_prefix(character.bytes);
    }
    return plain;
}

std::string asciiText(std::string_view text)
{
    std::string ascii;
    for (const char each : plainText(text)) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte < 0x80)
            ascii += each;
        else if (byte >= 0xC0) // the first byte of a character that is not ASCII
            ascii += '?';
    }
    return ascii;
}

std::size_t displayWidth(std::string_view utf8)
{
    std::size_t width = 0;
    while (!utf8.empty()) {
        const Character character = firstCharacter(utf8);
        width += character.width;
        utf8.remove_prefix(character.bytes);
    }
    return width;
}

std::string cutToWidth(std::string_view utf8, std::size_t width)
{
    if (displayWidth(utf8) <= width) return std::string(utf8);
    if (width == 0) return {};
    std::size_t bytes = 0, used = 0;
    for (;;) {
        const Character next = firstCharacter(utf8.substr(bytes));
        if (used + next.width > width - 1) break;
        used += next.width;
        bytes += next.bytes;
    }
    return std::string(utf8.substr(0, bytes)) + ellipsis;
}

std::string layOutTable(const std::vector<TableColumn>& columns,
                        const std::vector<std::vector<std::string>>& rows, std::size_t width)
{
    std::vector<Placed> line, below;
    std::vector<std::string> titles;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        titles.emplace_back(columns[i].title);
        std::size_t widest = displayWidth(titles.back());
        for (const auto& row : rows) widest = std::max(widest, displayWidth(row[i]));
        line.push_back({&columns[i], i, widest});
    }
    if (width > 0) {
        for (auto next = nextToMove(line); next != line.end() && minimumWidthOf(line) > width;
             next = nextToMove(line)) {
            below.insert(below.begin(), *next);
            line.erase(next);
        }
        for (Placed* cut; widthOf(line) > width && (cut = widestToCut(line));) --cut->width;
    }
    std::sort(below.begin(), below.end(), [](const Placed& a, const Placed& b) { return a.index < b.index; });

    std::string text = layOutLine(line, titles);
    for (const auto& row : rows) text += layOutLine(line, row) + layOutBelow(below, row, width);
    return text;
}

std::size_t terminalWidth(int file)
{
    winsize size = {};
    const bool isTerminal = ioctl(file, TIOCGWINSZ, &size) == 0;
    return isTerminal ? size.ws_col : 0;
}

} // namespace kvx
