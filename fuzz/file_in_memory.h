// A file that exists in memory only.
#pragma once

#include "fuzz/require.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// A file in memory with given bytes. The path and the URL of the file are valid while this object lives.
class FileInMemory {
public:
    FileInMemory(const std::uint8_t* bytes, std::size_t size)
        : descriptor_(memfd_create("sound", MFD_CLOEXEC))
    {
        require(descriptor_ >= 0 && write(descriptor_, bytes, size) == static_cast<ssize_t>(size),
                "the system has memory for the file");
    }
    ~FileInMemory() { close(descriptor_); }
    FileInMemory(const FileInMemory&) = delete;
    FileInMemory& operator=(const FileInMemory&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

    /// Make a URL of the file. The caller releases the URL.
    CFURLRef createUrl() const
    {
        const std::string text = path();
        return CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                                                       static_cast<CFIndex>(text.size()), false);
    }

private:
    const int descriptor_;
};
