// The normal forms of Unicode, for UTF-8 text.
#pragma once

#include <CoreFoundation/CFString.h>

#include <optional>
#include <string>
#include <string_view>

namespace kvxplatform {

/// Whether the platform knows the form: D, KD, C or KC.
bool isNormalForm(CFStringNormalizationForm form);

/// UTF-8 in a normal form; nothing if it is not UTF-8 or the form is unknown. Throws std::bad_alloc.
std::optional<std::string> inNormalForm(std::string_view utf8, CFStringNormalizationForm form);

} // namespace kvxplatform
