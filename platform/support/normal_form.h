// The normal forms of Unicode for UTF-8 text. All functions: [any].
#pragma once

#include <CoreFoundation/CFString.h>

#include <optional>
#include <string>
#include <string_view>

namespace kvxplatform {

/// Whether `form` is D, KD, C or KC.
bool isNormalForm(CFStringNormalizationForm form);

/// Convert text to a normal form. Throws std::bad_alloc.
/// Returns  nothing if the text is not UTF-8 or the form is unknown.
std::optional<std::string> inNormalForm(std::string_view utf8, CFStringNormalizationForm form);

} // namespace kvxplatform
