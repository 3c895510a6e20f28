#include "host/kvx/terminal/keyboard.h"

#include "host/kvx/terminal/interrupt.h"

#include <fmt/core.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <optional>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace kvx {
namespace {

constexpr char escape = '\x1b';

/// What the terminal sends for a key, and what the key does.
struct KeyFact {
    Key key;
    std::string_view bytes; ///< each of these characters is the key
    char arrow; ///< last byte of the sequence of an arrow key, such as ESC [ A or ESC O A; 0: no arrow
    const char* name;
    const char* action;
};

// clang-format off
constexpr KeyFact keyFacts[] = {
    {Key::pause,    " ",  0,   "space", "pause, or continue"},
    {Key::back,     "",   'D', "left",  "5 seconds back"},
    {Key::forward,  "",   'C', "right", "5 seconds forward"},
    {Key::next,     "nN", 0,   "n",     "next file"},
    {Key::previous, "pP", 0,   "p",     "start of the file, or in its first 3 seconds the previous file"},
    {Key::louder,   "",   'A', "up",    "louder by 5 %"},
    {Key::softer,   "",   'B', "down",  "softer by 5 %"},
    {Key::mute,     "mM", 0,   "m",     "mute, or back to the volume before"},
    {Key::loopIn,   "[",  0,   "[",     "set the loop start here"},
    {Key::loopOut,  "]",  0,   "]",     "set the loop end here"},
    {Key::loop,     "lL", 0,   "l",     "loop from [ to ], on or off"},
    {Key::loopFile, "wW", 0,   "w",     "loop the whole file, on or off"},
    {Key::faster,   "+=", 0,   "+",     "faster by 5 % of the normal speed"},
    {Key::slower,   "-_", 0,   "-",     "slower by 5 % of the normal speed"},
    {Key::higher,   ">.", 0,   ">",     "pitch up by a semitone"},
    {Key::lower,    "<,", 0,   "<",     "pitch down by a semitone"},
    {Key::help,     "?",  0,   "?",     "list the keys"},
    {Key::quit,     "qQ", 0,   "q",     "quit"},
};
// clang-format on

static_assert(std::size(keyFacts) == static_cast<std::size_t>(Key::quit) + 1, "each key has a row");

/// The key of the first row for which `fits` is true.
template <class Fits>
std::optional<Key> findKey(Fits fits)
{
    const KeyFact* const found = std::find_if(std::begin(keyFacts), std::end(keyFacts), fits);
    return found == std::end(keyFacts) ? std::nullopt : std::optional(found->key);
}

std::optional<Key> keyOfByte(char byte)
{
    return findKey([byte](const KeyFact& fact) { return fact.bytes.find(byte) != fact.bytes.npos; });
}

/// The arrow key whose sequence ends with `last`. A modifier key adds numbers before the last byte, which the
/// decoder skips.
std::optional<Key> keyOfArrow(char last)
{
    return findKey([last](const KeyFact& fact) { return fact.arrow == last; });
}

const KeyFact& factOf(Key key)
{
    return *std::find_if(std::begin(keyFacts), std::end(keyFacts),
                         [key](const KeyFact& fact) { return fact.key == key; });
}

bool isLastOfSequence(char byte) { return byte >= 0x40 && byte <= 0x7e; }

constexpr int input = STDIN_FILENO;

// Signal handlers read and write the following variables.
termios former; // mode of the terminal before enterRawMode()
// Whether this program has set raw mode, in which the terminal delivers each key at once.
volatile std::sig_atomic_t isRaw = 0;
volatile std::sig_atomic_t isStopTyped = 0;
struct sigaction formerStop, formerContinue, formerQuit, formerAbort;

bool isForeground() { return tcgetpgrp(input) == getpgrp(); }

extern "C" void restoreTerminal()
{
    if (!isRaw) return;
    isRaw = 0;
    // In the background, tcsetattr() would stop the process.
    if (isForeground()) tcsetattr(input, TCSANOW, &former);
}

void enterRawMode()
{
    termios raw;
    if (isRaw || !isForeground() || tcgetattr(input, &raw) != 0) return;
    constexpr tcflag_t lineByLine = ICANON | ECHO;
    // If the terminal is already in raw mode, a shell has restored the mode that this program had set. Then
    // `former` keeps the mode before raw mode.
    if (raw.c_lflag & lineByLine) former = raw;
    raw.c_lflag &= ~lineByLine; // the flag ISIG stays set, so Ctrl-C and Ctrl-Z send signals
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    // isRaw is set before tcsetattr(), so that a signal handler that runs between both restores the mode.
    isRaw = 1;
    if (tcsetattr(input, TCSANOW, &raw) != 0) isRaw = 0;
}

extern "C" void noteStop(int) { isStopTyped = 1; }

// SIGCONT has continued this process, perhaps in the background, and the shell has set its own terminal mode.
extern "C" void noteContinue(int) { isRaw = 0; }

extern "C" void restoreAndEnd(int signal)
{
    restoreTerminal();
    // The former handler of SIGABRT removes unfinished files. SIGQUIT ends the process even if it was
    // ignored.
    if (signal == SIGABRT)
        sigaction(signal, &formerAbort, nullptr);
    else
        std::signal(signal, SIG_DFL);
    raise(signal); // takes effect after this handler, because the signal is blocked until then
}

} // namespace

std::vector<Key> allKeys()
{
    std::vector<Key> keys;
    for (const KeyFact& fact : keyFacts) keys.push_back(fact.key);
    return keys;
}

std::vector<std::string> formatKeys(const std::vector<Key>& keys)
{
    std::vector<std::string> lines;
    for (const Key key : keys)
        lines.push_back(fmt::format("  {:<7}{}", factOf(key).name, factOf(key).action));
    return lines;
}

std::string formatKeySentence(const std::vector<Key>& keys)
{
    std::string text;
    for (const Key key : keys)
        text += fmt::format("{}{}: {}", text.empty() ? "" : "; ", factOf(key).name, factOf(key).action);
    return text;
}

std::string formatKeyNames(const std::vector<Key>& keys)
{
    std::string names;
    for (const Key key : keys) names += fmt::format("{}{}", names.empty() ? "" : ", ", factOf(key).name);
    return names;
}

std::vector<Key> KeyDecoder::decode(std::string_view bytes)
{
    std::vector<Key> keys;
    for (char byte : bytes) {
        std::optional<Key> key;
        if (byte == escape) {
            sequence_ = byte; // begins a sequence, and discards an unfinished one
        } else if (sequence_.empty()) {
            key = keyOfByte(byte);
        } else if (sequence_.size() == 1) {
            sequence_ += byte;
            if (byte == '[' || byte == 'O') continue;
            sequence_.clear(); // Escape and one character are a key typed with Alt, which has no action
        } else if (isLastOfSequence(byte)) {
            key = keyOfArrow(byte);
            sequence_.clear();
        }
        if (key) keys.push_back(*key);
    }
    return keys;
}

Keyboard::Keyboard() : isInUse_(!obstacle() && tcgetattr(input, &former) == 0)
{
    isStopTyped = 0;
    if (!isInUse_) return;
    setSignalHandler(SIGTSTP, noteStop, SA_RESTART, &formerStop);
    setSignalHandler(SIGCONT, noteContinue, SA_RESTART, &formerContinue);
    setSignalHandler(SIGQUIT, restoreAndEnd, 0, &formerQuit);
    setSignalHandler(SIGABRT, restoreAndEnd, 0, &formerAbort);
    onFirstInterrupt(restoreTerminal);
    enterRawMode();
}

Keyboard::~Keyboard()
{
    if (!isInUse_) return;
    restoreTerminal();
    onFirstInterrupt(nullptr);
    sigaction(SIGTSTP, &formerStop, nullptr);
    sigaction(SIGCONT, &formerContinue, nullptr);
    sigaction(SIGQUIT, &formerQuit, nullptr);
    sigaction(SIGABRT, &formerAbort, nullptr);
}

const char* Keyboard::obstacle()
{
    return !isatty(STDIN_FILENO)    ? "the standard input is not a terminal"
           : !isatty(STDOUT_FILENO) ? "the standard output is not a terminal"
                                    : nullptr;
}

std::vector<Key> Keyboard::read()
{
    if (!isInUse_ || isInterrupted()) return {};
    enterRawMode(); // has an effect if the process has returned to the foreground
    if (!isRaw || !isForeground()) return {};
    // Poll before read(), because a signal handler may have restored the terminal, and read() would then
    // block until the user types a whole line.
    pollfd waiting = {input, POLLIN, 0};
    char bytes[64];
    if (poll(&waiting, 1, 0) == 1 && (waiting.revents & POLLIN))
        if (const ssize_t got = ::read(input, bytes, sizeof bytes); got > 0)
            return decoder_.decode({bytes, static_cast<std::size_t>(got)});
    return {};
}

bool Keyboard::isStopRequested()
{
    const bool isRequested = isStopTyped;
    isStopTyped = 0;
    return isRequested;
}

void Keyboard::stopProcess()
{
    restoreTerminal();
    struct sigaction own;
    setSignalHandler(SIGTSTP, SIG_DFL, 0, &own);
    raise(SIGTSTP); // stops the process; the call returns when the process continues
    sigaction(SIGTSTP, &own, nullptr);
}

} // namespace kvx
