#include "platform/corefoundation/encoding.h"
#include "platform/corefoundation/string.h"
#include "platform/support/border.h"
#include "platform/support/misuse.h"
#include "platform/support/normal_form.h"

#include <algorithm>
#include <string>

using namespace kvxplatform;

namespace {

/// Convert text to a Unicode normal form. The text has no unpaired surrogates. Throws std::bad_alloc.
std::u16string normalized(std::u16string_view units, CFStringNormalizationForm form)
{
    const std::optional<std::string> bytes = corefoundation::encode(units, kCFStringEncodingUTF8);
    return *corefoundation::decode(*inNormalForm(*bytes, form), kCFStringEncodingUTF8);
}

/// Returns  the index of the first unpaired surrogate; the text's length without an unpaired surrogate.
std::size_t firstUnpaired(std::u16string_view units)
{
    const auto isHigh = [](char16_t unit) { return (unit & 0xFC00) == 0xD800; };
    const auto isLow = [](char16_t unit) { return (unit & 0xFC00) == 0xDC00; };
    for (std::size_t i = 0; i < units.size(); ++i) {
        const bool isPair = isHigh(units[i]) && i + 1 < units.size() && isLow(units[i + 1]);
        if (!isPair && (isHigh(units[i]) || isLow(units[i]))) return i;
        if (isPair) ++i;
    }
    return units.size();
}

} // namespace

void CFStringNormalize(CFMutableStringRef theString, CFStringNormalizationForm theForm)
{
    if (!theString || !theString->isMutable)
        endForMisuse("CFStringNormalize was given a string that cannot change");
    if (!isNormalForm(theForm)) return;
    // If memory runs out, the text stays unchanged, because the function cannot report a failure.
    withinBorder(false, [&] {
        std::u16string result;
        for (std::u16string_view rest = theString->units; !rest.empty();) {
            // An unpaired surrogate combines with no character, so the texts before and after the surrogate
            // are normalised separately.
            const std::size_t end = firstUnpaired(rest);
            result += normalized(rest.substr(0, end), theForm);
            if (end < rest.size()) result += rest[end];
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        theString->units = std::move(result);
        return true;
    });
}
