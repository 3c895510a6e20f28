#include "platform/audiofile/open_descriptor.h"

#include "platform/support/file_path.h"

#include <AudioToolbox/AudioFile.h>

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvxplatform::audiofile {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(number_, other.number_);
    return *this;
}

Descriptor::~Descriptor()
{
    if (number_ >= 0) close(number_);
}

OSStatus openDescriptor(const std::string& path, OpenFile& out)
{
    const std::string found = pathOnDisk(path);
    struct stat item;
    if (stat(found.c_str(), &item) != 0) return statusOfError(errno);
    if (!S_ISREG(item.st_mode)) return kAudioFileInvalidFileError;

    // The opened file is checked again, because a pipe may have replaced it after stat(). O_NONBLOCK keeps
    // the opening of such a pipe from blocking.
    Descriptor opened(open(found.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (opened.number() < 0 || fstat(opened.number(), &item) != 0) return statusOfError(errno);
    if (!S_ISREG(item.st_mode)) return kAudioFileInvalidFileError;
    out.descriptor = std::move(opened);
    out.bytes = item.st_size;
    return noErr;
}

} // namespace kvxplatform::audiofile
