// The Unicode normal forms of UTF-8 text. All functions: [any].
#pragma once

#include <CoreFoundation/CFString.h>

#include <optional>
#include <string>
#include <string_view>

namespace kvxplatform {

/// Whether `form` is one of the four normal forms D, KD, C and KC.
bool isNormalForm(CFStringNormalizationForm form);

/// Convert UTF-8 text to a normal form. Throws std::bad_alloc.
/// Returns  no value if the text is not UTF-8 or the form is unknown.
std::optional<std::string> inNormalForm(std::string_view utf8, CFStringNormalizationForm form);

} // namespace kvxplatform
