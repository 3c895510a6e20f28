// The normal forms of Unicode, for bytes.
#pragma once

#include <CoreFoundation/CFString.h>

#include <optional>
#include <string>
#include <string_view>

namespace kvxplatform::corefoundation {

/// UTF-8 in a normal form; nothing if it is not UTF-8 or the form is unknown. Throws std::bad_alloc.
std::optional<std::string> inNormalForm(std::string_view utf8, CFStringNormalizationForm form);

} // namespace kvxplatform::corefoundation
