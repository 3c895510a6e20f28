#include "host/kvx/play/end_rule.h"

#include <cmath>

namespace kvx {

std::uint64_t framesRendered(std::uint64_t fileFrames, double fileRate, double rate, double deviceRate)
{
    return std::uint64_t(std::llround(double(fileFrames) * deviceRate / (fileRate * rate)));
}

std::uint64_t framesOf(double seconds, double deviceRate)
{
    if (!(seconds > 0)) return 0;
    const double frames = seconds * deviceRate;
    const double nearest = std::round(frames);
    // A time that was made from whole frames is those frames again.
    return std::uint64_t(
        std::fabs(frames - nearest) < 1e-6 * std::fmax(1.0, nearest * 1e-6) ? nearest : std::ceil(frames));
}

double asGiven(double rate)
{
    const double hundredth = std::round(rate * 100.0) / 100.0;
    return float(hundredth) == float(rate) ? hundredth : rate;
}

bool EndRule::hasEnded(std::uint64_t frames, std::uint64_t framesBehindEnd)
{
    if (!isEndSeen_) endSeenAt_ = frames;
    isEndSeen_ = true;
    return frames - endSeenAt_ >= framesBehindEnd;
}

} // namespace kvx
