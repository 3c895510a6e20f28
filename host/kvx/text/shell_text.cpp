#include "host/kvx/text/shell_text.h"

namespace kvx {
namespace {

/// Whether the shell passes a byte on unchanged, wherever it stands. Bytes of UTF-8 characters do.
bool isPlain(char c)
{
    constexpr std::string_view marks = "%+,-./:=@_";
    const bool isLetterOrDigit = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return isLetterOrDigit || marks.find(c) != marks.npos || static_cast<unsigned char>(c) >= 0x80;
}

} // namespace

std::string quotedForShell(std::string_view word)
{
    bool isWholePlain = !word.empty();
    std::string quoted = "'";
    for (const char c : word) {
        isWholePlain = isWholePlain && isPlain(c);
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return isWholePlain ? std::string(word) : quoted + "'";
}

} // namespace kvx
