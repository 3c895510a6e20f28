// Constants that state with which sanitizers this program is built.
#pragma once

#ifndef __has_feature // missing in other compilers
#define __has_feature(name) 0
#endif

namespace support {

constexpr bool hasAddressSanitizer = __has_feature(address_sanitizer);
constexpr bool hasThreadSanitizer = __has_feature(thread_sanitizer);

} // namespace support
