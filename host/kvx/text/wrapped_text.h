// Breaks text into lines.
// All functions: [any].
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kvx {

/// Break a text between words, so that no line is wider than `width` terminal columns. A longer word has a
/// line for itself. Each line after the first begins with `indent` blanks, which count as width; the first
/// line begins at column `start`.
/// Returns  the lines, each with a newline at its end.
std::string wrapText(std::string_view text, std::size_t width, std::size_t indent = 0, std::size_t start = 0);

} // namespace kvx
