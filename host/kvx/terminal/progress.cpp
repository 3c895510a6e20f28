#include "host/kvx/terminal/progress.h"

#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"
#include "host/kvx/text/terminal_text.h"

#include <unistd.h>

namespace kvx {
namespace {

constexpr const char* eraseToEnd =
    "\x1b[J"; // control sequence that erases from the cursor to the end of the screen

} // namespace

Verbosity verbosityFor(bool isQuiet, std::FILE* out)
{
    if (isQuiet) return Verbosity::quiet;
    return isatty(fileno(out)) ? Verbosity::live : Verbosity::plain;
}

// The cursor rests at the first column of the live line. If the terminal becomes narrower, it wraps the line,
// so erase to the end of the screen, not to the end of the line.
void Progress::wipe()
{
    if (isShown_) std::fputs(eraseToEnd, out_);
    isShown_ = false;
}

void Progress::flush()
{
    if (std::fflush(out_) != 0 || std::ferror(out_))
        if (!isInterrupted()) throw OutputFailure();
}

void Progress::leaveLine()
{
    if (verbosity_ == Verbosity::live) std::fputs("\n", out_);
    isShown_ = false;
}

void Progress::say(const std::string& line)
{
    if (verbosity_ == Verbosity::quiet) return;
    wipe();
    std::fputs((plainText(withInputNames(line)) + "\n").c_str(), out_);
    flush();
}

void Progress::warn(const std::string& line)
{
    wipe();
    flush(); // so that a terminal, which shows stdout and stderr, shows the lines in order
    printMessage(line);
    hasWarned_ = true;
}

void Progress::warnOfSkipped(const std::string& line)
{
    warn(line);
    ++skippedFiles_;
}

int Progress::exitCode() const
{
    const int ofSignal = interruptExitCode();
    return ofSignal == 0 && hasWarned_ ? 1 : ofSignal;
}

bool Progress::isLineDue() const
{
    constexpr std::chrono::milliseconds interval(100);
    return verbosity_ == Verbosity::live &&
           (!isShown_ || std::chrono::steady_clock::now() - last_ >= interval);
}

bool Progress::showLine(const LiveLine& line)
{
    if (!isLineDue()) return false;
    last_ = std::chrono::steady_clock::now();
    constexpr std::size_t usualWidth = 80;
    const std::size_t width = terminalWidth(fileno(out_));
    // The last column stays free, because some terminals move to the next line as soon as it is written.
    std::fputs((fitLine(line, (width ? width : usualWidth) - 1) + eraseToEnd + "\r").c_str(), out_);
    isShown_ = true;
    flush();
    return true;
}

} // namespace kvx
