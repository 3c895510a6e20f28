#include "plugin/host_string.h"

#include "plugin/ascii.h"
#include "plugin/host_exceptions.h"
#include "plugin/new_string.h"
#include "plugin/zeroed.h"

#include <cstring>

namespace {

constexpr long long longestText = 0x7FFFFFFF;
// Largest size in bytes of UTF-32 text that is converted in a buffer on the stack.
constexpr long long shortUTF32Bytes = 799;
// Largest length in UTF-16 units of a platform string that is copied to a buffer on the stack.
constexpr CFIndex shortCFStringUnits = 99;
constexpr int shortCFStringBytes = 600;
constexpr int utf8BytesPerUnit = 6; // upper bound for any form of UTF-8 that a platform may write

OwnedString buildUnconverted(const void* bytes, long long length, std::uint32_t encoding)
{
    return newString(bytes, static_cast<HostInteger>(length), encoding);
}

OwnedString buildWithEncoding(const void* bytes, long long length, std::uint32_t encoding)
{
    return OwnedString(REALBuildStringWithEncoding(bytes, static_cast<HostInteger>(length), encoding));
}

REALstringStruct* convertToUTF8(OwnedString text)
{
    return text ? REALConvertString(text.get(), encodingUTF8) : nullptr;
}

/// Convert `count` UTF-32 code points to zero-terminated UTF-16. Returns the number of units without the
/// terminator. Values above the Unicode range become U+FFFD; surrogates are dropped.
std::size_t utf16FromUTF32(const void* utf32, std::size_t count, std::uint16_t* units)
{
    std::uint16_t* const start = units;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t point;
        std::memcpy(&point, static_cast<const char*>(utf32) + 4 * i, 4); // unaligned input
        if (point >= 0x110000) {
            *units++ = 0xFFFD;
        } else if (point > 0xFFFF) {
            *units++ = static_cast<std::uint16_t>(0xD800 + ((point - 0x10000) >> 10));
            *units++ = static_cast<std::uint16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
        } else if ((point & 0xFFFFF800) != 0xD800) {
            *units++ = static_cast<std::uint16_t>(point);
        }
    }
    *units = 0;
    return static_cast<std::size_t>(units - start);
}

REALstringStruct* buildFromUTF32OnOldHost(const void* bytes, long long length)
{
    const auto count = static_cast<std::size_t>(length / 4);
    // Capacity for a surrogate pair per code point, and for a terminator.
    const auto capacity = static_cast<long long>(count) * 2 + 1;
    std::uint16_t shortUnits[shortUTF32Bytes / 4 * 2 + 1];
    Zeroed<std::uint16_t> longUnits;
    std::uint16_t* units = shortUnits;
    if (length > shortUTF32Bytes) {
        longUnits = allocateZeroed<std::uint16_t>(capacity);
        if (!longUnits) return nullptr;
        units = longUnits.get();
    }
    const std::size_t written = utf16FromUTF32(bytes, count, units);
    return REALBuildUnicodeStringUTF16(units, static_cast<long long>(written * sizeof *units));
}

REALstringStruct* build(const void* bytes, long long length, std::uint32_t encoding)
{
    switch (encoding) {
    case encodingUTF16:
        return REALBuildUnicodeStringUTF16(bytes, length);
    case encodingUTF32:
        return rbversion_rbversion >= hostWithUTF32
                   ? convertToUTF8(buildWithEncoding(bytes, length, encodingUTF32))
                   : buildFromUTF32OnOldHost(bytes, length);
    case encodingMacRoman:
    case encodingWindowsLatin1:
    case encodingUnknown:
        if (isASCII(bytes, length)) encoding = encodingASCII;
        return buildUnconverted(bytes, length, encoding).release();
    default:
        return buildUnconverted(bytes, length, encoding).release();
    }
}

REALstringStruct* buildFromUTF8Copy(CFStringRef text, char* buffer, CFIndex capacity)
{
    if (!CFStringGetCString(text, buffer, capacity, kCFStringEncodingUTF8)) return nullptr;
    return REALBuildUnicodeString(buffer, static_cast<long long>(std::strlen(buffer)), encodingUTF8);
}

} // namespace

REALstringStruct* REALBuildUnicodeString(const void* bytes, long long length, unsigned long encoding)
{
    if (!bytes || length < 1 || length > longestText) return nullptr;
    return translateExceptions([&] { return build(bytes, length, static_cast<std::uint32_t>(encoding)); });
}

REALstringStruct* REALBuildUnicodeStringUTF16(const void* bytes, long long length)
{
    return convertToUTF8(rbversion_rbversion >= hostWithStringEncodings
                             ? buildWithEncoding(bytes, length, encodingUTF16)
                             : buildUnconverted(bytes, length, encodingUTF16));
}

REALstringStruct* CFString2RBString(CFStringRef text)
{
    if (!text) return nullptr;
    const CFIndex units = CFStringGetLength(text);
    if (units <= 0) return nullptr;
    if (units <= shortCFStringUnits) {
        char buffer[shortCFStringBytes + 1] = {};
        return buildFromUTF8Copy(text, buffer, shortCFStringBytes);
    }
    const long long capacity = static_cast<long long>(units) * utf8BytesPerUnit;
    const auto buffer = allocateZeroed<char>(capacity);
    return buffer ? buildFromUTF8Copy(text, buffer.get(), static_cast<CFIndex>(capacity)) : nullptr;
}
