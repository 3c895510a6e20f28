// Open a regular file for reading. Pipes, sockets and devices are refused without being opened, so that
// opening never blocks and has no side effect. All functions: [any].
#pragma once

#include <MacTypes.h>

#include <string>

namespace kvxplatform::audiofile {

/// Owns a file descriptor; -1 for none.
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
    SInt64 bytes = 0; ///< size when the file was opened
};

/// Open the file at a path, or the file whose name is another Unicode form of it (pathOnDisk).
/// Errors  statusOfError of the system's error, such as fnfErr and permErr; kAudioFileInvalidFileError for a
///         folder, pipe, socket or device. Throws std::bad_alloc.
OSStatus openDescriptor(const std::string& path, OpenFile& out);

} // namespace kvxplatform::audiofile
