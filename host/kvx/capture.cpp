#include "host/kvx/capture.h"

#include "host/kvx/failure.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvx {
namespace {

Failure cannotWrite(const std::string& path, const std::string& reason)
{
    return Failure(
        fmt::format("{} cannot be written: {}; name a file in a folder that exists and that you may write to",
                    path, reason));
}

} // namespace

Capture::Capture(KVXDeviceID device, const std::string& path)
    : device_(device), path_(path), unfinished_(fmt::format("{}.{}.part", path, getpid()))
{
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        throw cannotWrite(path, S_ISDIR(status.st_mode) ? "it is a folder" : "it is not a plain file");

    const int file = open(unfinished_.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    if (file < 0) throw cannotWrite(path, std::strerror(errno));
    close(file);

    if (KVXPlatformStartCapture(device_, unfinished_.c_str()) != 0) {
        const std::string reason = KVXPlatformErrorText();
        std::remove(unfinished_.c_str());
        throw cannotWrite(path, reason);
    }
}

Capture::~Capture()
{
    if (unfinished_.empty()) return;
    KVXPlatformStopCapture(device_);
    std::remove(unfinished_.c_str());
}

void Capture::keep()
{
    if (KVXPlatformStopCapture(device_) != 0) throw cannotWrite(path_, KVXPlatformErrorText());
    if (std::rename(unfinished_.c_str(), path_.c_str()) != 0) throw cannotWrite(path_, std::strerror(errno));
    unfinished_.clear();
}

} // namespace kvx
