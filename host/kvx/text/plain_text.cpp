#include "host/kvx/text/plain_text.h"

#include <utf8proc.h>

#include <algorithm>

namespace kvx {

std::string plainText(std::string_view text)
{
    std::string plain;
    const auto* at = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto left = static_cast<utf8proc_ssize_t>(text.size());
    while (left > 0) {
        utf8proc_int32_t character = -1;
        const utf8proc_ssize_t length = std::max<utf8proc_ssize_t>(1, utf8proc_iterate(at, left, &character));
        const bool isPlain = character >= 0 && utf8proc_category(character) != UTF8PROC_CATEGORY_CC;
        if (isPlain)
            plain.append(reinterpret_cast<const char*>(at), static_cast<std::size_t>(length));
        else
            plain += '?';
        at += length;
        left -= length;
    }
    return plain;
}

std::string asciiText(std::string_view text)
{
    std::string ascii;
    for (char each : plainText(text)) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte < 0x80)
            ascii += each;
        else if (byte >= 0xC0) // the first byte of a character
            ascii += '?';
    }
    return ascii;
}

} // namespace kvx
