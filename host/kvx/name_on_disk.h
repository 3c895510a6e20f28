// Names as the disk has them.
#pragma once

#include <string>

namespace kvx {

/// The same letter can be written as one character or as a letter and its accent, and terminals, other
/// systems and the disk disagree. A part of `path` that does not stand there as given is looked for composed,
/// then decomposed; the path as given where none of them does.
std::string nameOnDisk(const std::string& path);

} // namespace kvx
