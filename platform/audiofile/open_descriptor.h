// A file of the disk, opened for reading. Opening never waits and never wakes anybody: what is not a regular
// file is refused without being opened.
#pragma once

#include <MacTypes.h>

#include <string>

namespace kvxplatform::audiofile {

/// Owns an open file's number; -1 is none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int ofNumber) : number_(ofNumber) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    int number() const { return number_; }

private:
    int number_ = -1;
};

struct OpenFile {
    Descriptor descriptor;
    SInt64 bytes = 0; ///< when it was opened
};

/// Open the item at a path, or at another form of its name that is on the disk.
///
/// Errors  fnfErr, permErr and what else the system says (statusOfError); kAudioFileInvalidFileError for a
///         folder, a pipe, a socket or a device. Throws std::bad_alloc.
OSStatus openDescriptor(const std::string& path, OpenFile& out);

} // namespace kvxplatform::audiofile
