// Keys that the user types while a file plays. The terminal delivers each key at once and does not show it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kvx {

/// The functions of the keys.
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

/// One line for the user that lists the keys.
const char* keyHelp();

/// Decodes the bytes that a terminal sends, and ignores keys without a function.
/// [main]
class KeyDecoder {
public:
    /// Decode the next bytes. The bytes of one key may arrive in several calls.
    std::vector<Key> decode(std::string_view bytes);

private:
    std::string sequence_; // the first bytes of an unfinished escape sequence
};

/// Reads keys while an object exists, if standard input and standard output are terminals and this process is
/// in the foreground. The terminal returns to its former mode when the object is destroyed, when the process
/// is stopped, and at the first signal. Only one object may exist, and it needs an InterruptGuard.
/// [main]
class Keyboard {
public:
    Keyboard();
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    /// The reason why no keys can be read, as a clause; null if keys can be read.
    static const char* obstacle();

    /// The keys typed since the last call. Never blocks.
    std::vector<Key> read();

    /// Whether the user has typed Ctrl-Z since the last call.
    static bool isStopRequested();

    /// Restore the terminal and stop the process, as Ctrl-Z does. Returns when the process continues.
    void stopProcess();

private:
    bool isInUse_;
    KeyDecoder decoder_;
};

} // namespace kvx
