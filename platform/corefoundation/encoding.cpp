#include "platform/corefoundation/encoding.h"

#include "platform/corefoundation/code_page.h"

#include <algorithm>
#include <iterator>

#include <utf8proc.h>

namespace kvxplatform::corefoundation {
namespace {

enum class Form { oneByte, utf8, utf16, utf32 };
enum class Order { little, big };

struct Encoding {
    CFStringEncoding id;
    Form form;
    int bytesPerUnit;       ///< maximum number of bytes for one UTF-16 unit
    const UpperHalf* upper; ///< characters of bytes 0x80 to 0xFF; null unless `form` is oneByte
    Order order;            ///< byte order of the UTF-16 and UTF-32 forms
};

// clang-format off
constexpr Encoding encodings[] = {
    {kCFStringEncodingMacRoman,      Form::oneByte, 1, &macRomanUpperHalf,      Order::little},
    {kCFStringEncodingWindowsLatin1, Form::oneByte, 1, &windowsLatin1UpperHalf, Order::little},
    {kCFStringEncodingISOLatin1,     Form::oneByte, 1, &isoLatin1UpperHalf,     Order::little},
    {kCFStringEncodingASCII,         Form::oneByte, 1, &asciiUpperHalf,         Order::little},
    {kCFStringEncodingUTF8,          Form::utf8,    3, nullptr,                 Order::little},
    {kCFStringEncodingUTF16,         Form::utf16,   2, nullptr,                 Order::little},
    {kCFStringEncodingUTF16BE,       Form::utf16,   2, nullptr,                 Order::big},
    {kCFStringEncodingUTF16LE,       Form::utf16,   2, nullptr,                 Order::little},
    {kCFStringEncodingUTF32,         Form::utf32,   4, nullptr,                 Order::little},
    {kCFStringEncodingUTF32BE,       Form::utf32,   4, nullptr,                 Order::big},
    {kCFStringEncodingUTF32LE,       Form::utf32,   4, nullptr,                 Order::little},
};
// clang-format on
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "UTF-16 and UTF-32 without a byte order are the processor's");

const Encoding* find(CFStringEncoding id)
{
    const auto found =
        std::find_if(std::begin(encodings), std::end(encodings), [=](auto& row) { return row.id == id; });
    return found == std::end(encodings) ? nullptr : found;
}

// ---- characters and UTF-16 units ----

constexpr bool isSurrogate(char32_t c) { return c >= 0xD800 && c < 0xE000; }
constexpr bool isHigh(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLow(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// Read the character at the unit index `at` and advance `at` past the character. An unpaired surrogate is
/// returned unchanged.
char32_t nextCharacter(std::u16string_view units, std::size_t& at)
{
    const char16_t unit = units[at++];
    if (!isHigh(unit) || at == units.size() || !isLow(units[at])) return unit;
    return 0x10000 + ((unit - 0xD800u) << 10) + (units[at++] - 0xDC00u);
}

void append(std::u16string& units, char32_t c)
{
    if (c < 0x10000) {
        units += static_cast<char16_t>(c);
    } else {
        units += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        units += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
}

// ---- multi-byte numbers ----

void append(std::string& bytes, char32_t number, int size, Order order)
{
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(number >> 8 * (order == Order::big ? size - 1 - i : i));
}

char32_t numberAt(const char* bytes, int size, Order order)
{
    char32_t number = 0;
    for (int i = 0; i < size; ++i)
        number |= char32_t{static_cast<unsigned char>(bytes[i])}
                  << 8 * (order == Order::big ? size - 1 - i : i);
    return number;
}

// ---- writing a character as bytes; the functions return false if the encoding lacks the character ----

bool put(std::string& bytes, char32_t c, const UpperHalf& upper)
{
    if (c < 0x80) {
        bytes += static_cast<char>(c);
        return true;
    }
    const auto found = std::find(upper.begin(), upper.end(), c);
    if (found == upper.end()) return false;
    bytes += static_cast<char>(0x80 + (found - upper.begin()));
    return true;
}

bool putUtf8(std::string& bytes, char32_t c)
{
    if (isSurrogate(c)) return false;
    utf8proc_uint8_t buffer[4];
    const utf8proc_ssize_t size = utf8proc_encode_char(static_cast<utf8proc_int32_t>(c), buffer);
    bytes.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(size));
    return true;
}

bool put(std::string& bytes, char32_t c, const Encoding& encoding)
{
    switch (encoding.form) {
    case Form::oneByte:
        return put(bytes, c, *encoding.upper);
    case Form::utf8:
        return putUtf8(bytes, c);
    case Form::utf32:
        if (isSurrogate(c)) return false;
        append(bytes, c, 4, encoding.order);
        return true;
    case Form::utf16:
        break;
    }
    if (c >= 0x10000) {
        append(bytes, 0xD800 + ((c - 0x10000) >> 10), 2, encoding.order);
        c = 0xDC00 + ((c - 0x10000) & 0x3FF);
    }
    append(bytes, c, 2, encoding.order);
    return true;
}

// ---- reading a character from bytes; the functions return the number of bytes, 0 for invalid bytes ----

std::size_t takeUtf8(std::string_view bytes, char32_t& c)
{
    utf8proc_int32_t found = 0;
    const utf8proc_ssize_t size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(bytes.data()),
                                                   static_cast<utf8proc_ssize_t>(bytes.size()), &found);
    c = static_cast<char32_t>(found);
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

std::size_t take(std::string_view bytes, const Encoding& encoding, char32_t& c)
{
    switch (encoding.form) {
    case Form::oneByte: {
        const auto byte = static_cast<unsigned char>(bytes[0]);
        c = byte < 0x80 ? byte : (*encoding.upper)[byte - 0x80u];
        return byte < 0x80 || c != 0;
    }
    case Form::utf8:
        return takeUtf8(bytes, c);
    case Form::utf16:
        if (bytes.size() < 2) return 0;
        c = numberAt(bytes.data(), 2, encoding.order);
        return 2;
    case Form::utf32:
        break;
    }
    if (bytes.size() < 4) return 0;
    c = numberAt(bytes.data(), 4, encoding.order);
    return c < 0x110000 && !isSurrogate(c) ? 4 : 0;
}

} // namespace

std::optional<std::string> encode(std::u16string_view units, CFStringEncoding id)
{
    const Encoding* encoding = find(id);
    if (!encoding) return {};
    std::string bytes;
    bytes.reserve(units.size() * static_cast<std::size_t>(encoding->bytesPerUnit));
    for (std::size_t at = 0; at < units.size();)
        if (!put(bytes, nextCharacter(units, at), *encoding)) return {};
    return bytes;
}

std::optional<std::u16string> decode(std::string_view bytes, CFStringEncoding id)
{
    const Encoding* encoding = find(id);
    if (!encoding) return {};
    std::u16string units;
    units.reserve(bytes.size());
    while (!bytes.empty()) {
        char32_t c = 0;
        const std::size_t size = take(bytes, *encoding, c);
        if (size == 0) return {};
        append(units, c);
        bytes.remove_prefix(size);
    }
    return units;
}

int bytesPerUnit(CFStringEncoding id)
{
    const Encoding* encoding = find(id);
    return encoding ? encoding->bytesPerUnit : 0;
}

} // namespace kvxplatform::corefoundation
