#include "host/kvx/text/wrapped_text.h"

#include "host/kvx/text/terminal_text.h"

namespace kvx {

std::string wrapText(std::string_view text, std::size_t width, std::size_t indent, std::size_t start)
{
    std::string wrapped;
    std::size_t column = start;
    bool isLineEmpty = true;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(word.size() == text.size() ? word.size() : word.size() + 1);
        const std::size_t columns = displayWidth(word);
        if (!isLineEmpty && column + 1 + columns > width) {
            wrapped += '\n' + std::string(indent, ' ');
            column = indent;
            isLineEmpty = true;
        }
        if (!isLineEmpty) {
            wrapped += ' ';
            ++column;
        }
        wrapped += word;
        column += columns;
        isLineEmpty = false;
    }
    return wrapped + "\n";
}

} // namespace kvx
