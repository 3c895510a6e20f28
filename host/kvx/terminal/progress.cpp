#include "host/kvx/terminal/progress.h"

#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"
#include "host/kvx/text/terminal_text.h"
#include "host/kvx/text/time_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <unistd.h>

namespace kvx {
namespace {

constexpr const char* eraseToEnd =
    "\x1b[J"; // control sequence that erases from the cursor to the end of the screen

constexpr double silenceDb = -120;

float magnitudeOf(double db) { return db > silenceDb ? static_cast<float>(std::pow(10.0, db / 20.0)) : 0.0f; }

/// Format the level. The width is the same during a pause, so that the rest of the live line does not move.
std::string formatSound(const PlayStatus& status)
{
    constexpr int places = 10; // short enough that a live line without pitch and volume fits in 80 columns
    if (status.isPaused) return "[" + std::string(places, '-') + "]   paused";
    return formatLevel(magnitudeOf(status.level), places);
}

std::string formatLoop(const PlayStatus& status)
{
    if (status.loopOut > status.loopIn)
        return fmt::format("loop {}-{}{}", formatTime(status.loopIn), formatTime(status.loopOut),
                           status.isLooping ? "" : " off");
    return status.loopIn > 0 ? fmt::format("loop {}-", formatTime(status.loopIn)) : "no loop";
}

} // namespace

std::string formatLevel(float peak, int places)
{
    constexpr double floorDb = -60.0;
    if (!(peak > 0.0f))
        return fmt::format("[{}]   silent", std::string(static_cast<std::size_t>(places), '-'));
    const double db = 20.0 * std::log10(double{peak});
    const int lit = static_cast<int>(
        std::clamp(std::ceil((db - floorDb) / -floorDb * places), 0.0, static_cast<double>(places)));
    return fmt::format("[{}{}] {:5.1f} dB", std::string(static_cast<std::size_t>(lit), '#'),
                       std::string(static_cast<std::size_t>(places - lit), '-'),
                       std::clamp(db, -99.9, 999.9));
}

std::string formatPosition(double seconds, double totalSeconds, float peak)
{
    return fmt::format("  {} / {}  {}", formatTime(std::min(seconds, totalSeconds)), formatTime(totalSeconds),
                       formatLevel(peak));
}

std::string formatPlayStatus(const PlayStatus& status)
{
    std::string line = fmt::format("  {} / {}  {}", formatTime(std::min(status.position, status.duration)),
                                   formatTime(status.duration), formatSound(status));
    if (!status.note.empty()) line += "  " + status.note;
    line += fmt::format("  rate {:.2f}  {}", status.rate, formatLoop(status));
    if (std::lround(status.pitch) != 0) line += fmt::format("  pitch {:+.0f}", status.pitch);
    if (std::lround(status.volume * 100) != 100)
        line += fmt::format("  volume {:.0f} %", status.volume * 100);
    return line;
}

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
    std::fputs((plainText(line) + "\n").c_str(), out_);
    flush();
}

void Progress::warn(const std::string& line)
{
    wipe();
    flush(); // so that a terminal, which shows stdout and stderr, shows the lines in order
    printMessage(line);
    hasWarned_ = true;
}

int Progress::exitCode() const
{
    const int ofSignal = interruptExitCode();
    return ofSignal == 0 && hasWarned_ ? 1 : ofSignal;
}

bool Progress::isTooSoon()
{
    const auto now = std::chrono::steady_clock::now();
    if (isShown_ && now - last_ < std::chrono::milliseconds(100)) return true;
    last_ = now;
    return false;
}

bool Progress::showLine(const std::string& line)
{
    if (verbosity_ != Verbosity::live || isTooSoon()) return false;
    constexpr std::size_t usualWidth = 80;
    const std::size_t width = terminalWidth(fileno(out_));
    // The last column stays free, because some terminals move to the next line as soon as it is written.
    std::fputs((line.substr(0, (width ? width : usualWidth) - 1) + eraseToEnd + "\r").c_str(), out_);
    isShown_ = true;
    flush();
    return true;
}

} // namespace kvx
