// Keys of a terminal and what they mean while a file plays.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kvx {

enum class Key {
    pause,
    back,
    forward,
    louder,
    softer,
    loopIn,
    loopOut,
    loop,
    faster,
    slower,
    higher,
    lower,
    quit,
};

/// What the keys do, in a line for the user.
const char* keyHelp();

/// Bytes as a terminal sends them, to keys. A sequence may arrive in pieces; what means nothing is skipped.
class KeyReader {
public:
    std::vector<Key> read(std::string_view bytes);

private:
    std::string unfinished_; // the begin of a sequence
};

} // namespace kvx
