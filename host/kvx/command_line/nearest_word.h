// Finds the word that the user meant by a misspelt word.
// All functions: [any].
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kvx {

/// The word that differs least from `word`, counted in letters that are inserted, removed, replaced or
/// exchanged with the next letter.
/// Returns  "" if every word differs by more than a third of its letters.
std::string nearestWord(std::string_view word, const std::vector<std::string>& words);

} // namespace kvx
