#include "tests/platform/corefoundation/text.h"

#include <KVXPlatform/KVXPlatform.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace text {

Owned make(std::u16string_view units)
{
    return Owned(CFStringCreateWithCharacters(kCFAllocatorDefault,
                                              reinterpret_cast<const UniChar*>(units.data()),
                                              static_cast<CFIndex>(units.size())));
}

std::optional<std::string> bytes(CFStringRef string, CFStringEncoding encoding)
{
    // The bytes may contain zeros, so a zero does not mark the end. The two buffers have different fill
    // values, and the first difference marks the end of the written bytes.
    std::vector<char> first(static_cast<std::size_t>(CFStringGetLength(string)) * 4 + 1, 'a');
    std::vector<char> second(first.size(), 'b');
    const auto size = static_cast<CFIndex>(first.size());
    if (!CFStringGetCString(string, first.data(), size, encoding)) return {};
    CFStringGetCString(string, second.data(), size, encoding);
    const auto end = std::mismatch(first.begin(), first.end(), second.begin()).first;
    return std::string(first.begin(), end - 1);
}

std::u16string units(CFStringRef string)
{
    const auto all = bytes(string, kCFStringEncodingUTF16);
    std::u16string result(all ? all->size() / 2 : 0, u'\0');
    if (all) std::memcpy(result.data(), all->data(), result.size() * 2);
    return result;
}

std::string readable(std::u16string_view units)
{
    std::string result;
    for (const char16_t unit : units) {
        char number[8];
        std::snprintf(number, sizeof number, "%04X ", static_cast<unsigned>(unit));
        result += number;
    }
    return result;
}

unsigned alive()
{
    KVXLiveCount rows[32];
    const unsigned kinds = std::min<unsigned>(KVXPlatformGetLiveCounts(rows, 32), 32);
    for (unsigned i = 0; i < kinds; ++i)
        if (std::strcmp(rows[i].kind, "CFString") == 0) return rows[i].count;
    return 0;
}

} // namespace text
