#include "host/kvx/progress.h"

#include "host/kvx/failure.h"
#include "host/kvx/interrupt.h"
#include "host/kvx/plain_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unistd.h>

namespace kvx {

std::string printTime(double seconds)
{
    const auto tenths = static_cast<long long>(std::max(0.0, seconds) * 10.0);
    const long long minutes = tenths / 600;
    const std::string rest = fmt::format("{:02}.{}", tenths / 10 % 60, tenths % 10);
    return minutes < 60 ? fmt::format("{}:{}", minutes, rest)
                        : fmt::format("{}:{:02}:{}", minutes / 60, minutes % 60, rest);
}

std::string printLevel(float peak)
{
    constexpr int places = 20;
    constexpr double floorDb = -60.0;
    if (!(peak > 0.0f)) return fmt::format("[{}]   silent", std::string(places, '-'));
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

void Progress::wipe()
{
    if (shown_ > 0) std::fputs(("\r" + std::string(shown_, ' ') + "\r").c_str(), out_);
    shown_ = 0;
}

void Progress::flush()
{
    if (std::fflush(out_) != 0 || std::ferror(out_))
        if (!isInterrupted()) throw OutputFailure();
}

void Progress::leaveLine()
{
    if (verbosity_ == Verbosity::live) std::fputs("\n", out_);
    shown_ = 0;
}

void Progress::say(const std::string& line)
{
    if (verbosity_ == Verbosity::quiet) return;
    wipe();
    std::fputs((plainText(line) + "\n").c_str(), out_);
    flush();
}

void Progress::show(double seconds, double totalSeconds, float peak)
{
    if (verbosity_ != Verbosity::live) return;
    const auto now = std::chrono::steady_clock::now();
    if (shown_ > 0 && now - last_ < std::chrono::milliseconds(100)) return;
    last_ = now;
    const std::string line = fmt::format("  {} / {}  {}", printTime(std::min(seconds, totalSeconds)),
                                         printTime(totalSeconds), printLevel(peak));
    wipe();
    std::fputs(line.c_str(), out_);
    flush();
    shown_ = line.size();
}

} // namespace kvx
