// Bytes in hexadecimal, out and in.
#pragma once

#include <string>
#include <string_view>

namespace kvx {

/// Sixteen bytes a line: offset, bytes, characters. Empty for none.
std::string dumpBytes(std::string_view bytes);

/// Bytes from pairs of digits, with or without blanks between the pairs. Throws WrongUsage.
std::string parseHex(std::string_view text);

} // namespace kvx
