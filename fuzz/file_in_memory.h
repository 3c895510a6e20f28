// A file of given bytes that stands nowhere on the disk.
#pragma once

#include "fuzz/require.h"

#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// It can be opened by its path as long as this lives.
class FileInMemory {
public:
    FileInMemory(const std::uint8_t* bytes, std::size_t size)
        : descriptor_(memfd_create("sound", MFD_CLOEXEC))
    {
        require(descriptor_ >= 0 && write(descriptor_, bytes, size) == static_cast<ssize_t>(size),
                "there is memory for the file");
    }
    ~FileInMemory() { close(descriptor_); }
    FileInMemory(const FileInMemory&) = delete;
    FileInMemory& operator=(const FileInMemory&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    const int descriptor_;
};
