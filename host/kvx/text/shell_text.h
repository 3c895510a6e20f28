// Text for a command line of the shell.
// All functions: [any].
#pragma once

#include <string>
#include <string_view>

namespace kvx {

/// Quote a word, such as a file name, so that the shell passes it on unchanged: "my song.wav" becomes
/// 'my song.wav'. A word without special characters stays unchanged.
std::string quotedForShell(std::string_view word);

} // namespace kvx
