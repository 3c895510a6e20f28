// The terminal of a command that is played like an instrument: keys come at once and are not shown.
#pragma once

#include <cstddef>
#include <string>

namespace kvx {

/// Columns of the terminal that `file` is, as it is now; 80 where it does not tell.
std::size_t terminalColumns(int file);

/// What the user is told where no keys can be read, for one of KeyTerminal::whyNot's reasons.
std::string printNoKeys(const char* whyNot);

/// While one lives, and both standard input and output are terminals with this process in their foreground,
/// keys are read one by one. The terminal gets its own mode back at the end, when the process is stopped, and
/// at the first signal that asks it to end. One at a time, under an InterruptGuard. [main]
class KeyTerminal {
public:
    KeyTerminal();
    ~KeyTerminal();
    KeyTerminal(const KeyTerminal&) = delete;
    KeyTerminal& operator=(const KeyTerminal&) = delete;

    /// Why keys cannot be read, as half a sentence; null where they can.
    static const char* whyNot();

    /// What was typed since the last call; does not wait.
    std::string read();

    /// Ctrl-Z was typed since the last call.
    static bool isStopAsked();

    /// Give the terminal back and stop the process, as Ctrl-Z does; returns when it goes on.
    void stopProcess();

private:
    bool isInUse_;
};

} // namespace kvx
