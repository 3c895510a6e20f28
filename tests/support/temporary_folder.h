// A temporary folder. The destructor removes it with all its files.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <stdlib.h>
#include <string>

namespace support {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        char path[] = "/tmp/kvx-test-XXXXXX";
        if (!mkdtemp(path)) throw std::runtime_error("cannot make a temporary folder in /tmp");
        path_ = path;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path() const { return path_.string(); }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

    /// Return the number of entries in the folder.
    std::size_t count() const
    {
        return std::size_t(std::distance(std::filesystem::directory_iterator(path_), {}));
    }

private:
    std::filesystem::path path_;
};

} // namespace support
