// Real numbers as a user writes them, alone and in lists.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace kvx {

/// "1", "-0.5", "+3", "1e3"; nothing else around it, and none that is not finite.
std::optional<double> readReal(std::string_view text);

/// "1,-2,3": nothing where one of them is no number, or missing.
std::optional<std::vector<double>> readReals(std::string_view text);

} // namespace kvx
