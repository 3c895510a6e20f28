// Text for a terminal: functions that replace control characters, measure and cut texts, and lay out tables.
// All functions: [any].
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kvx {

/// Replace each control character and each invalid byte of a UTF-8 text with a question mark.
std::string plainText(std::string_view text);

/// Replace the same characters as plainText(), and also each character that is not ASCII, so that each byte
/// takes one terminal column.
std::string asciiText(std::string_view text);

/// The number of terminal columns that a text takes.
std::size_t displayWidth(std::string_view utf8);

/// Cut a text to `width` terminal columns. A cut text ends with an ellipsis.
std::string cutToWidth(std::string_view utf8, std::size_t width);

/// Width in columns of the terminal that the descriptor `file` refers to; 0 if `file` is not a terminal or
/// the terminal reports no width.
std::size_t terminalWidth(int file);

/// A column of a table of text.
struct TableColumn {
    const char* title;
    enum Align { left, right } align;
    std::size_t minimumWidth; ///< narrowest width to which cells may be cut; 0: cells are never cut
    int moveOrder; ///< rank for moving the column below its row, highest rank first; 0: never moved
};

/// Lay out a table: a line of titles and a line per row. If `width` is too small, the widest cells are cut.
/// If cuts are not enough, columns are moved to a line below each row, as "title cell, …".
/// Shape  rows[row][column], printable UTF-8; each line ends with a newline; `width` 0: lines of any width.
std::string layOutTable(const std::vector<TableColumn>& columns,
                        const std::vector<std::vector<std::string>>& rows, std::size_t width);

} // namespace kvx
