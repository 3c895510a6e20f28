// A folder of a test's own, gone when the test is.
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
        if (!mkdtemp(path)) throw std::runtime_error("no temporary folder can be made");
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

    /// Names of all that is in it, sorted by nobody.
    std::size_t count() const
    {
        return std::size_t(std::distance(std::filesystem::directory_iterator(path_), {}));
    }

private:
    std::filesystem::path path_;
};

} // namespace support
