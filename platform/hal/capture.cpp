#include "platform/hal/capture.h"
#include "platform/support/border.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace kvxplatform::hal {

namespace {
// Longest delay of a slow disk, in seconds, for which the ring buffer has capacity.
constexpr std::size_t ringSeconds = 10;
constexpr std::size_t largestRing = 32u << 20;    // largest ring buffer, in samples
constexpr std::size_t samplesPerWrite = 1u << 15; // largest number of samples in one file write
constexpr std::int64_t pollNanos = 20'000'000;    // longest time that samples stay in the ring buffer

const char* adviceFor(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return "free space on the disk";
    case EFBIG:
        return "write to a disk that takes larger files, or raise the limit with `ulimit -f unlimited`";
    case ENOENT:
        return "see that its folder still exists";
    default:
        return "see that its folder can be written";
    }
}
} // namespace

std::shared_ptr<Capture> Capture::open(const std::string& path, const Form& form, std::string& error)
{
    std::shared_ptr<Capture> capture(new Capture);
    capture->path_ = path;
    capture->temporaryPath_ = path + ".part";
    capture->form_ = form;
    if (std::error_code ignored; std::filesystem::is_directory(path, ignored)) {
        error = "cannot write the capture " + path + ": it is a folder; name a file in it";
        return nullptr;
    }
    if (const int code = capture->file_.create(capture->temporaryPath_, static_cast<std::uint32_t>(form.rate),
                                               form.channels)) {
        error = code == EEXIST ? "cannot write the capture " + path + ": " + capture->temporaryPath_ +
                                     " is in the way; remove it, or name another file"
                               : "cannot write the capture " + path + ": " + std::strerror(code) +
                                     "; name a file in a folder that exists and can be written";
        return nullptr;
    }
    const std::size_t samples = static_cast<std::size_t>(form.rate) * form.channels * ringSeconds;
    const std::size_t size = std::clamp(samples, samplesPerWrite * 2, largestRing);
    const bool isStarted = withinBorder(false, [&] {
        // The ring buffer has whole frames, so a frame never wraps around its end.
        capture->ring_.resize(size - size % form.channels);
        capture->thread_ = std::thread([raw = capture.get()] { raw->run(); });
        capture->isFinished_ = false;
        return true;
    });
    if (!isStarted) {
        capture->discard();
        error = "cannot write the capture " + path + ": no memory or no thread is left; end other programs";
        return nullptr;
    }
    return capture;
}

Capture::~Capture()
{
    withinBorder(false, [&] {
        std::string ignored;
        return finish(ignored);
    });
}

void Capture::write(const float* samples, std::uint32_t frames, const Form& form, bool mayWait)
{
    const bool isEmpty = written_.load(std::memory_order_relaxed) == 0;
    // A capture may be opened during a change of settings, so a slice of another form does not end a capture
    // that has no samples yet.
    if (isEmpty) hasChanged_ = false;
    if (!(form == form_)) hasChanged_ = true;
    if (hasChanged_ || failure_.load(std::memory_order_relaxed) != 0) return;
    const std::size_t count = std::size_t{frames} * form.channels;
    mayWait ? writeThrough(samples, count) : append(samples, count);
}

void Capture::writeThrough(const float* samples, std::size_t count)
{
    const std::lock_guard<std::mutex> writing(writing_);
    while (writeSpan()) {
    }
    failure_ = file_.write(samples, count);
    written_ += count;
    taken_ += count;
}

void Capture::append(const float* samples, std::size_t count)
{
    const std::uint64_t written = written_.load(std::memory_order_relaxed);
    const auto unwritten = static_cast<std::size_t>(written - taken_.load(std::memory_order_acquire));
    if (count > ring_.size() - unwritten) {
        // The whole slice is lost, because half a frame would swap the channels of all later frames.
        hasLost_ = true;
        return;
    }
    const std::size_t start = written % ring_.size(), beforeEnd = std::min(count, ring_.size() - start);
    std::copy_n(samples, beforeEnd, ring_.begin() + static_cast<std::ptrdiff_t>(start));
    std::copy(samples + beforeEnd, samples + count, ring_.begin());
    written_.store(written + count, std::memory_order_release);
    if (unwritten + count >= samplesPerWrite) wake_.raise();
}

std::size_t Capture::writeSpan()
{
    const std::uint64_t taken = taken_.load(std::memory_order_relaxed);
    const std::uint64_t unwritten = written_.load(std::memory_order_acquire) - taken;
    const std::size_t start = taken % ring_.size();
    std::size_t span = std::min({static_cast<std::size_t>(unwritten), ring_.size() - start, samplesPerWrite});
    span -= span % form_.channels; // the write ends with a whole frame
    if (span) failure_ = file_.write(&ring_[start], span);
    taken_.store(taken + span, std::memory_order_release);
    return span;
}

void Capture::run()
{
    for (bool isLast = false; !isLast;) {
        isLast = isEnding_.load(std::memory_order_acquire);
        if (!isLast) wake_.waitFor(pollNanos);
        const std::lock_guard<std::mutex> writing(writing_);
        while (writeSpan()) {
        }
    }
}

void Capture::discard()
{
    file_.finish();
    std::remove(temporaryPath_.c_str());
}

bool Capture::finish(std::string& error)
{
    if (isFinished_) return true;
    isFinished_ = true;
    isEnding_.store(true, std::memory_order_release);
    wake_.raise();
    thread_.join();
    int code = file_.finish();
    if (code == 0 && std::rename(temporaryPath_.c_str(), path_.c_str()) != 0) code = errno;
    if (code != 0) {
        error =
            "the capture " + path_ + " cannot be finished: " + std::strerror(code) + "; " + adviceFor(code);
        std::remove(temporaryPath_.c_str());
        return false;
    }
    if (hasChanged_)
        error = "the capture " + path_ +
                " ends where the device's rate or number of channels changed; capture again";
    else if (hasLost_)
        error = "the capture " + path_ + " has gaps: the disk was too slow; name a file on a faster disk";
    return !hasChanged_ && !hasLost_;
}

} // namespace kvxplatform::hal
