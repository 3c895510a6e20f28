// Keys that the user types while a file plays. The terminal delivers each key at once and does not show it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kvx {

/// The actions that the user can choose with a key, in the order of the help.
enum class Key {
    pause,
    back,
    forward,
    next,
    previous,
    louder,
    softer,
    mute,
    loopIn,
    loopOut,
    loop,
    loopFile,
    faster,
    slower,
    higher,
    lower,
    help,
    quit,
};

/// All keys, in the order of the help.
std::vector<Key> allKeys();

/// Explain keys to the user, one line per key: "  space  pause, or continue".
std::vector<std::string> formatKeys(const std::vector<Key>& keys);

/// Explain keys in one sentence: "space: pause, or continue; left: 5 seconds back".
std::string formatKeySentence(const std::vector<Key>& keys);

/// List the names of keys: "space, left, right".
std::string formatKeyNames(const std::vector<Key>& keys);

/// The line that names the most important keys when playback starts.
constexpr const char* keyHint = "Keys: space pause, q quit, ? all keys";

/// Decodes the bytes that a terminal sends into keys. Keys without an action are ignored.
/// [main]
class KeyDecoder {
public:
    /// Decode the next bytes from the terminal. The bytes of one key may be divided between several calls.
    std::vector<Key> decode(std::string_view bytes);

private:
    std::string sequence_; // the first bytes of an unfinished escape sequence
};

/// Reads keys while an object exists, if standard input and standard output are terminals and this process is
/// in the foreground. The destructor, a stop of the process and the first signal restore the terminal's
/// former mode. Only one object may exist at a time, and only while an InterruptGuard exists.
/// [main]
class Keyboard {
public:
    Keyboard();
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    /// The reason why no keys can be read, as a clause for a message; null if keys can be read.
    static const char* obstacle();

    /// Return the keys that the user has typed since the last call. Never blocks.
    std::vector<Key> read();

    /// Whether the user has typed Ctrl-Z since the last call of this function.
    static bool isStopRequested();

    /// Restore the terminal and stop the process, as Ctrl-Z does. Returns after the process continues.
    void stopProcess();

private:
    bool isInUse_;
    KeyDecoder decoder_;
};

} // namespace kvx
