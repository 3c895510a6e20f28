#include "host/kvx/files/atomic_file.h"

#include "host/kvx/text/failure.h"

#include <fmt/core.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace kvx {
namespace {

const char* adviceFor(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return "free some space on the disk";
    case ENAMETOOLONG:
        return "name a file with a shorter name";
    case EFBIG:
        return "write to a disk that takes larger files, or raise the limit (ulimit -f)";
    case EMFILE:
    case ENFILE:
        return "raise the limit with `ulimit -n`";
    default:
        return "name a file in a folder that exists and that you may write to";
    }
}

Failure cannotWrite(const std::string& path, int error)
{
    return Failure(fmt::format("{} cannot be written: {}; {}", path, std::strerror(error), adviceFor(error)));
}

// The files to remove after a signal: two paths per temporary file, which contain the process number, so no
// other program uses the paths. The size is fixed, because a signal handler may not allocate.
char temporaries[8][PATH_MAX];
volatile std::sig_atomic_t temporaryCount = 0;

void remember(const std::string& path)
{
    const auto count = static_cast<std::size_t>(temporaryCount);
    for (std::size_t i = 0; i < count; ++i)
        if (path == temporaries[i]) return;
    if (count == std::size(temporaries) || path.size() >= PATH_MAX) return;
    path.copy(temporaries[count], path.size());
    temporaryCount = static_cast<int>(count) + 1;
}

} // namespace

void refuseToOverwrite(const std::vector<std::string>& inputs, const std::string& path, const char* option)
{
    std::error_code ignored;
    for (const std::string& input : inputs)
        if (std::filesystem::equivalent(input, path, ignored))
            throw Failure(fmt::format(
                "{} is being played and cannot be written at the same time; name another file for {}", path,
                option));
}

std::string temporaryPathFor(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        throw Failure(fmt::format("{} cannot be written: it is {}", path,
                                  S_ISDIR(status.st_mode) ? "a folder; name a file in it"
                                                          : "not a plain file; name a file"));
    const std::string temporary = fmt::format("{}.{}", path, getpid());
    const int file = open(temporary.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    if (file < 0) throw cannotWrite(path, errno);
    close(file);
    std::remove(temporary.c_str());
    remember(temporary + ".part"); // the platform writes an unfinished capture to this path
    remember(temporary);
    return temporary;
}

void moveIntoPlace(const std::string& temporary, const std::string& path)
{
    if (std::rename(temporary.c_str(), path.c_str()) == 0) return;
    const int error = errno;
    std::remove(temporary.c_str());
    throw cannotWrite(path, error);
}

void giveUpWriting(const std::string& temporary, const std::string& path, int error)
{
    std::remove(temporary.c_str());
    throw cannotWrite(path, error ? error : EIO);
}

void removeTemporaryFiles()
{
    for (int i = 0; i < temporaryCount; ++i) unlink(temporaries[i]);
}

} // namespace kvx
