// Aligned columns of text that fit a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kvx {

struct TableColumn {
    const char* title;
    enum Align { left, right } align;
    std::size_t least; ///< where room is short it may be cut down to this, or its title; 0: never cut
    int leaves; ///< where there is still too little, columns go below the row: the highest first, 0 never
};

/// A line of titles and a line for each row, each ended by a newline.
///
/// Shape   rows[row][column], cells as printable UTF-8. What went below a row stands there as "title cell,
/// …",
///         indented. Lines are at most `width` wide as long as the columns that never leave fit; 0 is as wide
///         as it comes.
std::string layOutTable(const std::vector<TableColumn>& columns,
                        const std::vector<std::vector<std::string>>& rows, std::size_t width);

/// Columns of a terminal that the text takes.
std::size_t displayWidth(std::string_view utf8);

/// The text, cut with an ellipsis where it is wider than `width`.
std::string cutToWidth(std::string_view utf8, std::size_t width);

/// Columns of the terminal that standard output is; 0 where it is none.
std::size_t terminalWidth();

} // namespace kvx
