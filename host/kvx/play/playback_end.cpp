#include "host/kvx/play/playback_end.h"

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
    return std::uint64_t(
        std::fabs(frames - nearest) < 1e-6 * std::fmax(1.0, nearest * 1e-6) ? nearest : std::ceil(frames));
}

bool EndDetector::hasEnded(std::uint64_t frames, std::uint64_t remaining)
{
    if (!isEndSeen_) endSeenAt_ = frames;
    isEndSeen_ = true;
    return frames - endSeenAt_ >= remaining;
}

} // namespace kvx
