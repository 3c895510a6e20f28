#include "host/runtime/values/text_encoding.h"

#include "abi/host_values.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace host {

namespace {

using CodePoints = std::u32string;

constexpr char32_t replacement = 0xFFFD;

// clang-format off
constexpr char16_t macRoman[128] = {  // of the bytes 0x80 to 0xFF
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1,
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8,
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC,
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF,
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211,
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8,
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153,
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA,
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4,
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};

constexpr char16_t windowsLatin1[32] = {  // of the bytes 0x80 to 0x9F; the rest is Latin 1
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};
// clang-format on

bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }
char32_t valid(char32_t c) { return c > 0x10FFFF || isSurrogate(c) ? replacement : c; }

// ---- reading ----

CodePoints readASCII(std::string_view bytes)
{
    CodePoints text;
    for (unsigned char byte : bytes) text.push_back(byte < 0x80 ? byte : replacement);
    return text;
}

CodePoints readMacRoman(std::string_view bytes)
{
    CodePoints text;
    for (unsigned char byte : bytes) text.push_back(byte < 0x80 ? byte : macRoman[byte - 0x80]);
    return text;
}

CodePoints readWindowsLatin1(std::string_view bytes)
{
    CodePoints text;
    for (unsigned char byte : bytes)
        text.push_back(byte < 0x80 || byte >= 0xA0 ? byte : windowsLatin1[byte - 0x80]);
    return text;
}

CodePoints readUTF8(std::string_view bytes)
{
    CodePoints text;
    const auto* next = reinterpret_cast<const utf8proc_uint8_t*>(bytes.data());
    auto left = static_cast<utf8proc_ssize_t>(bytes.size());
    while (left > 0) {
        utf8proc_int32_t c = 0;
        auto used = utf8proc_iterate(next, left, &c);
        if (used <= 0) {
            used = 1;
            c = replacement;
        }
        text.push_back(static_cast<char32_t>(c));
        next += used;
        left -= used;
    }
    return text;
}

template <class Unit>
Unit unitAt(std::string_view bytes, std::size_t index)
{
    Unit unit;
    std::memcpy(&unit, bytes.data() + index * sizeof(Unit), sizeof(Unit));
    return unit;
}

CodePoints readUTF16(std::string_view bytes)
{
    CodePoints text;
    const std::size_t count = bytes.size() / 2;
    for (std::size_t i = 0; i < count; ++i) {
        const char32_t unit = unitAt<char16_t>(bytes, i);
        const char32_t next = i + 1 < count ? unitAt<char16_t>(bytes, i + 1) : 0;
        const bool isPair = (unit & 0xFC00) == 0xD800 && (next & 0xFC00) == 0xDC00;
        if (isPair) {
            text.push_back(0x10000 + ((unit & 0x3FF) << 10) + (next & 0x3FF));
            ++i;
        } else {
            text.push_back(valid(unit));
        }
    }
    if (bytes.size() % 2 != 0) text.push_back(replacement);
    return text;
}

CodePoints readUTF32(std::string_view bytes)
{
    CodePoints text;
    for (std::size_t i = 0; i < bytes.size() / 4; ++i) text.push_back(valid(unitAt<char32_t>(bytes, i)));
    if (bytes.size() % 4 != 0) text.push_back(replacement);
    return text;
}

// ---- writing ----

std::string writeUTF8(const CodePoints& text)
{
    std::string bytes;
    for (char32_t c : text) {
        utf8proc_uint8_t encoded[4];
        const auto count = utf8proc_encode_char(static_cast<utf8proc_int32_t>(c), encoded);
        bytes.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(count));
    }
    return bytes;
}

/// Letters and their accents as one character where there is one.
CodePoints composed(const CodePoints& text)
{
    if (std::all_of(text.begin(), text.end(), [](char32_t c) { return c < 0x300; })) return text;
    const auto bytes = writeUTF8(text);
    utf8proc_uint8_t* normal = nullptr;
    const auto options = static_cast<utf8proc_option_t>(UTF8PROC_COMPOSE | UTF8PROC_STABLE);
    const auto count = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(bytes.data()),
                                    static_cast<utf8proc_ssize_t>(bytes.size()), &normal, options);
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(normal, std::free);
    if (count < 0) return text;
    return readUTF8({reinterpret_cast<const char*>(normal), static_cast<std::size_t>(count)});
}

template <class ByteOf>
std::string writeBytes(const CodePoints& text, ByteOf byteOf)
{
    std::string bytes;
    for (char32_t c : composed(text)) bytes.push_back(c < 0x80 ? static_cast<char>(c) : byteOf(c));
    return bytes;
}

template <std::size_t count>
char byteIn(const char16_t (&table)[count], char32_t c)
{
    const auto* found = std::find(std::begin(table), std::end(table), c);
    return found == std::end(table) ? '?' : static_cast<char>(0x80 + (found - table));
}

std::string writeASCII(const CodePoints& text)
{
    return writeBytes(text, [](char32_t) { return '?'; });
}

std::string writeMacRoman(const CodePoints& text)
{
    return writeBytes(text, [](char32_t c) { return byteIn(macRoman, c); });
}

std::string writeWindowsLatin1(const CodePoints& text)
{
    return writeBytes(text, [](char32_t c) {
        return c >= 0xA0 && c <= 0xFF ? static_cast<char>(c) : byteIn(windowsLatin1, c);
    });
}

template <class Unit>
void appendUnit(std::string& bytes, char32_t value)
{
    const auto unit = static_cast<Unit>(value);
    bytes.append(reinterpret_cast<const char*>(&unit), sizeof unit);
}

std::string writeUTF16(const CodePoints& text)
{
    std::string bytes;
    for (char32_t c : text) {
        if (c < 0x10000) {
            appendUnit<char16_t>(bytes, c);
        } else {
            appendUnit<char16_t>(bytes, 0xD800 + ((c - 0x10000) >> 10));
            appendUnit<char16_t>(bytes, 0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return bytes;
}

std::string writeUTF32(const CodePoints& text)
{
    std::string bytes;
    for (char32_t c : text) appendUnit<char32_t>(bytes, c);
    return bytes;
}

struct EncodingRow {
    std::uint32_t encoding;
    CodePoints (*read)(std::string_view);
    std::string (*write)(const CodePoints&);
};

// clang-format off
constexpr EncodingRow encodings[] = {
    {encodingMacRoman,      readMacRoman,      writeMacRoman},
    {encodingUTF16,         readUTF16,         writeUTF16},
    {encodingWindowsLatin1, readWindowsLatin1, writeWindowsLatin1},
    {encodingASCII,         readASCII,         writeASCII},
    {encodingUTF8,          readUTF8,          writeUTF8},
    {encodingUTF32,         readUTF32,         writeUTF32},
};
// clang-format on

const EncodingRow* rowOf(std::uint32_t encoding)
{
    const auto* found = std::find_if(std::begin(encodings), std::end(encodings),
                                     [&](const EncodingRow& row) { return row.encoding == encoding; });
    return found == std::end(encodings) ? nullptr : found;
}

} // namespace

bool isKnownEncoding(std::uint32_t encoding) { return rowOf(encoding) != nullptr; }

std::optional<std::string> convertText(std::string_view bytes, std::uint32_t from, std::uint32_t to)
{
    const auto* source = rowOf(from);
    const auto* target = rowOf(to);
    if (!source || !target) return std::nullopt;
    return target->write(source->read(bytes));
}

bool isAscii(std::string_view bytes)
{
    return std::none_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
}

bool isUTF8(std::string_view bytes)
{
    const auto* next = reinterpret_cast<const utf8proc_uint8_t*>(bytes.data());
    auto left = static_cast<utf8proc_ssize_t>(bytes.size());
    while (left > 0) {
        utf8proc_int32_t c = 0;
        const auto used = utf8proc_iterate(next, left, &c);
        if (used <= 0) return false;
        next += used;
        left -= used;
    }
    return true;
}

} // namespace host
