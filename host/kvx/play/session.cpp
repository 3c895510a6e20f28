#include "host/kvx/play/session.h"

#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/message.h"

#include <fmt/core.h>

#include <cmath>
#include <cstdio>

namespace kvx {

Meter::Meter(KVXDeviceID device) : device_(device) { KVXPlatformSetOutputTap(device, measure, this); }

Meter::~Meter() { KVXPlatformSetOutputTap(device_, nullptr, nullptr); }

void Meter::measure(void* context, const float* samples, std::uint32_t frames, std::uint32_t channels)
{
    float peak = 0.0f;
    for (std::size_t i = 0; i < std::size_t{frames} * channels; ++i) {
        const float magnitude = std::fabs(samples[i]);
        if (magnitude > peak) peak = magnitude;
    }
    // If takePeak() resets the peak between the load and the store, its next call returns this peak.
    Meter& self = *static_cast<Meter*>(context);
    if (peak > self.peak_.load(std::memory_order_relaxed)) self.peak_.store(peak, std::memory_order_relaxed);
    if (peak > self.highestPeak_.load(std::memory_order_relaxed))
        self.highestPeak_.store(peak, std::memory_order_relaxed);
    self.frames_.fetch_add(frames, std::memory_order_relaxed);
}

std::uint64_t framesRendered(std::uint64_t fileFrames, double fileRate, double rate, double deviceRate)
{
    return static_cast<std::uint64_t>(
        std::llround(static_cast<double>(fileFrames) * deviceRate / (fileRate * rate)));
}

std::uint64_t framesOf(double seconds, double deviceRate)
{
    if (!(seconds > 0)) return 0;
    const double frames = seconds * deviceRate;
    const double nearest = std::round(frames);
    return static_cast<std::uint64_t>(
        std::fabs(frames - nearest) < 1e-6 * std::fmax(1.0, nearest * 1e-6) ? nearest : std::ceil(frames));
}

bool EndDetector::hasEnded(std::uint64_t frames, std::uint64_t remaining)
{
    if (!isEndSeen_) endSeenAt_ = frames;
    isEndSeen_ = true;
    return frames - endSeenAt_ >= remaining;
}

Session::Session(const KVXDeviceInfo& device, bool isStepped, Progress& progress)
    : device_(device), isStepped_(isStepped), progress_(progress), meter_(device.device)
{
}

void Volume::toggleMute()
{
    if (value > 0) beforeMute = value;
    value = value > 0 ? 0 : beforeMute;
}

void Session::enableKeys()
{
    if (isStepped_) return;
    const char* obstacle = Keyboard::obstacle();
    progress_.say(obstacle ? fmt::format("No keys: {}. Ctrl-C ends.", obstacle) : keyHint);
    if (!obstacle) keyboard_.emplace();
}

bool Session::poll(const Transport& transport, std::uint64_t frames)
{
    if (keyboard_) applyKeys(transport);
    if (isOver()) return false;
    // The status takes the peak since the last live line, so it is read only when a line is due.
    if (progress_.isLineDue()) progress_.showLine(transport.status());
    passTime(device_, isStepped_, frames);
    if (!deviceNow(device_).isAlive) throw deviceDied(device_);
    return true;
}

bool Session::isOver() const { return isQuit_ || isInterrupted(); }

void Session::applyKeys(const Transport& transport)
{
    if (Keyboard::isStopRequested()) stopWithProcess(transport);
    for (const Key key : keyboard_->read()) {
        if (key == Key::quit)
            isQuit_ = true;
        else if (key == Key::help)
            for (const std::string& line : formatKeys(transport.keys)) progress_.say(line);
        else
            transport.press(key);
        progress_.hurry();
    }
}

void Session::stopWithProcess(const Transport& transport)
{
    const bool wasPlaying = transport.isPlaying();
    transport.pause();
    progress_.leaveLine();
    std::fflush(stdout);
    keyboard_->stopProcess();
    if (wasPlaying && !isInterrupted()) transport.play();
}

void printGap()
{
    printMessage(
        "the sound had gaps: the file could not be read as fast as it plays; copy it to a faster disk");
}

} // namespace kvx
