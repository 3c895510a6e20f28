#include "host/kvx/rendered_file.h"

#include "host/kvx/failure.h"
#include "host/kvx/write_aside.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace kvx {
namespace {

constexpr std::uint64_t mostBytes = 0xFFFF0000; // of samples: lengths have 32 bits, and there is a head

// The code of the C library call that just failed inside libsndfile.
int errorOfWrite() { return errno ? errno : EIO; }

} // namespace

RenderedFile::RenderedFile(const KVXDeviceInfo& device, const std::string& path, std::uint64_t frames)
    : device_(device.device), path_(path), wanted_(frames)
{
    if (frames > mostBytes / (sizeof(float) * device.outputChannels))
        throw Failure(
            fmt::format("{} would be longer than a WAV file can be; give a shorter --duration", path));
    unfinished_ = asideOf(path);
    SF_INFO info = {};
    info.samplerate = int(device.sampleRate);
    info.channels = int(device.outputChannels);
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    file_.reset(sf_open(unfinished_.c_str(), SFM_WRITE, &info));
    if (!file_) {
        std::remove(unfinished_.c_str());
        throw Failure(fmt::format("{} cannot be written: {}; name another file", path, sf_strerror(nullptr)));
    }
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE); // it holds the time of day
    KVXPlatformSetOutputTap(device_, take, this);
}

RenderedFile::~RenderedFile()
{
    KVXPlatformSetOutputTap(device_, nullptr, nullptr);
    file_.reset();
    if (!unfinished_.empty()) std::remove(unfinished_.c_str());
}

void RenderedFile::take(void* context, const float* samples, std::uint32_t frames, std::uint32_t)
{
    auto& self = *static_cast<RenderedFile*>(context);
    const auto count = std::min<std::uint64_t>(frames, self.wanted_ - self.taken_);
    if (self.failure_ || count == 0) return;
    errno = 0;
    if (sf_writef_float(self.file_.get(), samples, sf_count_t(count)) != sf_count_t(count))
        self.failure_ = errorOfWrite();
    self.taken_ += count;
}

void RenderedFile::checkDisk()
{
    if (!failure_) return;
    const std::string aside = std::exchange(unfinished_, {});
    file_.reset();
    giveUpWriting(aside, path_, failure_);
}

void RenderedFile::keep()
{
    KVXPlatformSetOutputTap(device_, nullptr, nullptr);
    checkDisk();
    errno = 0;
    sf_write_sync(file_.get());
    if (sf_error(file_.get()) != SF_ERR_NO_ERROR || sf_close(file_.release()) != 0) failure_ = errorOfWrite();
    checkDisk();
    moveIntoPlace(std::exchange(unfinished_, {}), path_);
}

} // namespace kvx
