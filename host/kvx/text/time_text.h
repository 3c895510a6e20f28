// Times that a user reads and writes: seconds, minutes and hours, with colons between them.
// All functions: [any].
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kvx {

/// Format a time in seconds as "0:07.3" or "1:02:03.0". The time is rounded down to tenths.
std::string formatTime(double seconds);

/// Format a time in seconds for an option, rounded to milliseconds: "1:30", "0:06.5" or "1:02:03.004".
std::string formatTimeOption(double seconds);

/// Read a time: seconds ("90", "1.5"), minutes and seconds ("1:30.5"), or hours, minutes and seconds
/// ("1:02:03"). After a colon stand two digits, up to 59. Seconds alone may have any form of readReal().
/// Errors  nullopt for any other text.
std::optional<double> readTime(std::string_view text);

/// The forms of a time, for help and messages to the user.
constexpr const char* timeUnits = "seconds, M:SS or H:MM:SS";

} // namespace kvx
