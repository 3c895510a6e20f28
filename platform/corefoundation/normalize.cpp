#include "platform/corefoundation/normal_form.h"

#include "platform/corefoundation/encoding.h"
#include "platform/corefoundation/string.h"
#include "platform/support/misuse.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <new>

#include <utf8proc.h>

using namespace kvxplatform;

namespace {

constexpr int common = UTF8PROC_STABLE; // never changed by later versions of Unicode

constexpr int optionsOfForm[] = {
    common | UTF8PROC_DECOMPOSE,                   // D
    common | UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT, // KD
    common | UTF8PROC_COMPOSE,                     // C
    common | UTF8PROC_COMPOSE | UTF8PROC_COMPAT,   // KC
};

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

bool isForm(CFStringNormalizationForm form)
{
    return form >= 0 && form < static_cast<CFIndex>(std::size(optionsOfForm));
}

/// `units` without unpaired surrogates, in normal form. Throws std::bad_alloc.
std::u16string normalized(std::u16string_view units, CFStringNormalizationForm form)
{
    const auto bytes = corefoundation::encode(units, kCFStringEncodingUTF8);
    return *corefoundation::decode(*corefoundation::inNormalForm(*bytes, form), kCFStringEncodingUTF8);
}

/// Where the first surrogate stands that is not one of a pair.
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

std::optional<std::string> corefoundation::inNormalForm(std::string_view utf8, CFStringNormalizationForm form)
{
    if (!isForm(form)) return {};
    utf8proc_uint8_t* output = nullptr;
    const auto size = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(utf8.data()),
                                   static_cast<utf8proc_ssize_t>(utf8.size()), &output,
                                   static_cast<utf8proc_option_t>(optionsOfForm[form]));
    const std::unique_ptr<utf8proc_uint8_t, Free> owner(output);
    if (size == UTF8PROC_ERROR_INVALIDUTF8) return {};
    if (size < 0) throw std::bad_alloc();
    return std::string(reinterpret_cast<char*>(output), static_cast<std::size_t>(size));
}

void CFStringNormalize(CFMutableStringRef theString, CFStringNormalizationForm theForm)
{
    if (!theString || !theString->isMutable)
        endForMisuse("CFStringNormalize was given a string that cannot change");
    if (!isForm(theForm)) return;
    try {
        std::u16string result;
        for (std::u16string_view rest = theString->units; !rest.empty();) {
            // An unpaired surrogate combines with nothing: what stands on its two sides is normalised apart.
            const std::size_t end = firstUnpaired(rest);
            result += normalized(rest.substr(0, end), theForm);
            if (end < rest.size()) result += rest[end];
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        theString->units = std::move(result);
    } catch (const std::exception&) {
        // Without memory the text stays as it is: the call has no result to say so.
    }
}
