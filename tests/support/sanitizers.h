// Which sanitizer this program was built with, as numbers for ordinary code.
#pragma once

#ifndef __has_feature // what other compilers lack
#define __has_feature(name) 0
#endif

namespace support {

constexpr bool hasAddressSanitizer = __has_feature(address_sanitizer);
constexpr bool hasThreadSanitizer = __has_feature(thread_sanitizer);

} // namespace support
