#include "platform/corefoundation/string.h"

#include "platform/corefoundation/encoding.h"
#include "platform/support/misuse.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>

using namespace kvxplatform;

namespace kvxplatform::corefoundation {
namespace {

void destroyString(Object* object) { delete static_cast<__CFString*>(object); }

Kind stringKind = {LiveCount("CFString"), destroyString};

const __CFString& textOf(CFStringRef text, const char* complaint)
{
    if (!text) endForMisuse(complaint);
    return *text;
}

} // namespace

CFMutableStringRef newString(std::u16string_view units, bool isMutable)
{
    try {
        return new __CFString(std::u16string(units), isMutable);
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const std::length_error&) {
        return nullptr; // longer than any text
    }
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
    try {
        const auto units = corefoundation::decode(cStr, encoding);
        return units ? corefoundation::newString(*units, false) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* chars, CFIndex numChars)
{
    if (numChars < 0 || (!chars && numChars > 0)) return nullptr;
    const auto* units = reinterpret_cast<const char16_t*>(chars);
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
    const auto& text = textOf(theString, "CFStringGetCString was given NULL");
    if (!buffer || bufferSize < 1) return false;
    buffer[0] = '\0';
    try {
        const auto bytes = corefoundation::encode(text.units, encoding);
        if (!bytes || bytes->size() >= static_cast<std::size_t>(bufferSize)) return false;
        *std::copy(bytes->begin(), bytes->end(), buffer) = '\0';
        return true;
    } catch (const std::exception&) {
        return false; // no memory to convert it
    }
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding)
{
    const CFIndex factor = corefoundation::bytesPerUnit(encoding);
    if (factor == 0 || length < 0 || length > std::numeric_limits<CFIndex>::max() / factor)
        return kCFNotFound;
    return length * factor;
}
