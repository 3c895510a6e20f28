// Opens a regular file for reading. Pipes, sockets and devices are refused without being opened, so that
// opening never blocks and has no side effect.
// All functions: [any].
#pragma once

#include <MacTypes.h>

#include <string>

namespace kvxplatform::audiofile {

/// Owns a file descriptor and closes it; -1 for no file.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    int number() const { return number_; }

private:
    int number_ = -1;
};

struct OpenFile {
    Descriptor descriptor;
    SInt64 bytes = 0; ///< size of the file when it was opened
};

/// Open the file at a path, or the file whose name is another Unicode form of the path (pathOnDisk).
/// Errors  the statusOfError value of a system error, such as fnfErr or permErr; kAudioFileInvalidFileError
///         for a folder, pipe, socket or device. Throws std::bad_alloc.
OSStatus openDescriptor(const std::string& path, OpenFile& out);

} // namespace kvxplatform::audiofile
