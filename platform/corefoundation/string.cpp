#include "platform/corefoundation/string.h"

#include "platform/corefoundation/encoding.h"
#include "platform/support/border.h"
#include "platform/support/misuse.h"

#include <algorithm>
#include <limits>

using namespace kvxplatform;

namespace kvxplatform::corefoundation {
namespace {

void destroyString(Object* object) { delete static_cast<__CFString*>(object); }

Kind stringKind = {LiveCount("CFString"), destroyString};

const __CFString& textOf(CFStringRef text, const char* message)
{
    if (!text) endForMisuse(message);
    return *text;
}

} // namespace

CFMutableStringRef newString(std::u16string_view units, bool isMutable)
{
    return withinBorder(nullptr, [&] { return new __CFString(std::u16string(units), isMutable); });
}

} // namespace kvxplatform::corefoundation

using corefoundation::textOf;

__CFString::__CFString(std::u16string&& ofUnits, bool canChange)
    : Object(corefoundation::stringKind), units(std::move(ofUnits)), isMutable(canChange)
{
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* cStr, CFStringEncoding encoding)
{
    if (!cStr) return nullptr;
    return withinBorder(nullptr, [&] {
        const std::optional<std::u16string> units = corefoundation::decode(cStr, encoding);
        return units ? corefoundation::newString(*units, false) : nullptr;
    });
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* chars, CFIndex numChars)
{
    if (numChars < 0 || (!chars && numChars > 0)) return nullptr;
    const auto* const units = reinterpret_cast<const char16_t*>(chars);
    return corefoundation::newString({units, static_cast<std::size_t>(numChars)}, false);
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef theString)
{
    return corefoundation::newString(textOf(theString, "CFStringCreateMutableCopy was given NULL").units,
                                     true);
}

CFIndex CFStringGetLength(CFStringRef theString)
{
    return static_cast<CFIndex>(textOf(theString, "CFStringGetLength was given NULL").units.size());
}

Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize, CFStringEncoding encoding)
{
    const __CFString& text = textOf(theString, "CFStringGetCString was given NULL");
    if (!buffer || bufferSize < 1) return false;
    buffer[0] = '\0';
    return withinBorder(false, [&] {
        const std::optional<std::string> bytes = corefoundation::encode(text.units, encoding);
        if (!bytes || bytes->size() >= static_cast<std::size_t>(bufferSize)) return false;
        *std::copy(bytes->begin(), bytes->end(), buffer) = '\0';
        return true;
    });
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding)
{
    const CFIndex factor = corefoundation::bytesPerUnit(encoding);
    if (factor == 0 || length < 0 || length > std::numeric_limits<CFIndex>::max() / factor)
        return kCFNotFound;
    return length * factor;
}
