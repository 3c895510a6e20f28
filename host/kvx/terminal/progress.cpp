#include "host/kvx/terminal/progress.h"

#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/terminal.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"
#include "host/kvx/text/terminal_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unistd.h>

namespace kvx {
namespace {

constexpr const char* eraseToEnd = "\x1b[J"; // from the cursor to the end of the screen

} // namespace

std::string printTime(double seconds)
{
    const auto tenths = static_cast<long long>(std::max(0.0, seconds) * 10.0);
    const long long minutes = tenths / 600;
    const std::string rest = fmt::format("{:02}.{}", tenths / 10 % 60, tenths % 10);
    return minutes < 60 ? fmt::format("{}:{}", minutes, rest)
                        : fmt::format("{}:{:02}:{}", minutes / 60, minutes % 60, rest);
}

std::string printLevel(float peak, int places)
{
    constexpr double floorDb = -60.0;
    if (!(peak > 0.0f)) return fmt::format("[{}]   silent", std::string(std::size_t(places), '-'));
    const double db = 20.0 * std::log10(double(peak));
    const int lit = int(std::clamp(std::ceil((db - floorDb) / -floorDb * places), 0.0, double(places)));
    return fmt::format("[{}{}] {:5.1f} dB", std::string(std::size_t(lit), '#'),
                       std::string(std::size_t(places - lit), '-'), std::clamp(db, -99.9, 999.9));
}

Verbosity verbosityFor(bool isQuiet, std::FILE* out)
{
    if (isQuiet) return Verbosity::quiet;
    return isatty(fileno(out)) ? Verbosity::live : Verbosity::plain;
}

// The cursor waits at the begin of the live line: wherever a terminal that is made narrower wraps it to, all
// that stands of it is from there on.
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
    flush(); // before the other stream's line, on a terminal that shows both
    printMessage(line);
    hasWarned_ = true;
}

int Progress::exitCode() const
{
    const int ofSignal = interruptExitCode();
    return ofSignal == 0 && hasWarned_ ? 1 : ofSignal;
}

void Progress::show(double seconds, double totalSeconds, float peak)
{
    showLine(fmt::format("  {} / {}  {}", printTime(std::min(seconds, totalSeconds)), printTime(totalSeconds),
                         printLevel(peak)));
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
    // The last column stays free: some terminals wrap as soon as it is written.
    std::fputs((line.substr(0, terminalColumns(fileno(out_)) - 1) + eraseToEnd + "\r").c_str(), out_);
    isShown_ = true;
    flush();
    return true;
}

} // namespace kvx
