#include "host/runtime/values/text_encoding.h"

#include "abi/host_values.h"
#include "host/runtime/support/errors.h"

#include <CoreFoundation/CFString.h>
#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>

// These platform functions are null in a program that does not link the platform.
#pragma weak CFStringCreateWithCString
#pragma weak CFStringGetCString
#pragma weak CFRelease

namespace host {

namespace {

using CodePoints = std::u32string;

constexpr char32_t replacement = 0xFFFD;

bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }
char32_t valid(char32_t c) { return c > 0x10FFFF || isSurrogate(c) ? replacement : c; }

// ---- reading bytes as code points ----

CodePoints readASCII(std::string_view bytes)
{
    CodePoints text;
    for (unsigned char byte : bytes) text.push_back(byte < 0x80 ? byte : replacement);
    return text;
}

CodePoints readUTF8(std::string_view bytes)
{
    CodePoints text;
    const auto* next = reinterpret_cast<const utf8proc_uint8_t*>(bytes.data());
    auto left = static_cast<utf8proc_ssize_t>(bytes.size());
    while (left > 0) {
        utf8proc_int32_t c = 0;
        utf8proc_ssize_t used = utf8proc_iterate(next, left, &c);
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

// ---- the platform's tables of single-byte encodings ----

/// The characters of the bytes 0x80 to 0xFF in a single-byte encoding.
using UpperHalf = std::array<char32_t, 128>;

/// The character that the platform assigns to a byte of an encoding. An unassigned byte is the control
/// character of the same number.
char32_t characterOf(unsigned char byte, std::uint32_t encoding)
{
    const char text[] = {static_cast<char>(byte), 0};
    const CFStringRef string = CFStringCreateWithCString(nullptr, text, encoding);
    if (!string) return byte;
    char utf8[8] = {};
    CFStringGetCString(string, utf8, sizeof utf8, kCFStringEncodingUTF8);
    CFRelease(string);
    return readUTF8(utf8).front();
}

UpperHalf upperHalfOf(std::uint32_t encoding)
{
    if (!&CFStringCreateWithCString)
        throw ProgramError(
            "Mac Roman and Windows Latin 1 text: the tables are in the platform library; link the "
            "program with libkvxplatform.so");
    UpperHalf characters;
    for (std::size_t i = 0; i < characters.size(); ++i)
        characters[i] = characterOf(static_cast<unsigned char>(0x80 + i), encoding);
    return characters;
}

template <std::uint32_t encoding>
const UpperHalf& upperHalf()
{
    static const UpperHalf characters = upperHalfOf(encoding);
    return characters;
}

template <std::uint32_t encoding>
CodePoints readSingleBytes(std::string_view bytes)
{
    CodePoints text;
    for (unsigned char byte : bytes) text.push_back(byte < 0x80 ? byte : upperHalf<encoding>()[byte - 0x80]);
    return text;
}

// ---- writing code points as bytes ----

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

/// Compose each letter and its accents into one character, if Unicode has that character.
CodePoints composed(const CodePoints& text)
{
    if (std::all_of(text.begin(), text.end(), [](char32_t c) { return c < 0x300; })) return text;
    const std::string bytes = writeUTF8(text);
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

std::string writeASCII(const CodePoints& text)
{
    return writeBytes(text, [](char32_t) { return '?'; });
}

template <std::uint32_t encoding>
std::string writeSingleBytes(const CodePoints& text)
{
    return writeBytes(text, [](char32_t c) {
        const UpperHalf& characters = upperHalf<encoding>();
        const auto* found = std::find(characters.begin(), characters.end(), c);
        return found == characters.end() ? '?' : static_cast<char>(0x80 + (found - characters.begin()));
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
    {encodingMacRoman,      readSingleBytes<encodingMacRoman>,      writeSingleBytes<encodingMacRoman>},
    {encodingUTF16,         readUTF16,                              writeUTF16},
    {encodingWindowsLatin1, readSingleBytes<encodingWindowsLatin1>, writeSingleBytes<encodingWindowsLatin1>},
    {encodingASCII,         readASCII,                              writeASCII},
    {encodingUTF8,          readUTF8,                               writeUTF8},
    {encodingUTF32,         readUTF32,                              writeUTF32},
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
    const EncodingRow* source = rowOf(from);
    const EncodingRow* target = rowOf(to);
    if (!source || !target) return std::nullopt;
    return target->write(source->read(bytes));
}

bool isAscii(std::string_view bytes)
{
    return std::none_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
}

bool isUTF8(std::string_view bytes) { return writeUTF8(readUTF8(bytes)) == bytes; }

} // namespace host
