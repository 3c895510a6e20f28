#include "host/kvx/files/write_aside.h"

#include "host/kvx/text/failure.h"

#include <fmt/format.h>

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
        return "make room on the disk";
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

// For a signal handler, which may not allocate. Names stay: they hold this process's number, so that no other
// program's file takes one.
char unfinished[8][PATH_MAX];
volatile std::sig_atomic_t unfinishedCount = 0;

void remember(const std::string& path)
{
    const auto count = std::size_t(unfinishedCount);
    for (std::size_t i = 0; i < count; ++i)
        if (path == unfinished[i]) return;
    if (count == std::size(unfinished) || path.size() >= PATH_MAX) return;
    path.copy(unfinished[count], path.size());
    unfinishedCount = int(count) + 1;
}

} // namespace

void refuseToOverwrite(const std::vector<std::string>& files, const std::string& path, const char* option)
{
    std::error_code ignored;
    for (const std::string& file : files)
        if (std::filesystem::equivalent(file, path, ignored))
            throw Failure(fmt::format(
                "{} is being played and cannot be written at the same time; name another file for {}", path,
                option));
}

std::string asideOf(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        throw Failure(fmt::format("{} cannot be written: it is {}", path,
                                  S_ISDIR(status.st_mode) ? "a folder; name a file in it"
                                                          : "not a plain file; name a file"));
    const std::string aside = fmt::format("{}.{}", path, getpid());
    const int file = open(aside.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    if (file < 0) throw cannotWrite(path, errno);
    close(file);
    std::remove(aside.c_str());
    remember(aside + ".part"); // the platform's captures write there first
    remember(aside);
    return aside;
}

void moveIntoPlace(const std::string& aside, const std::string& path)
{
    if (std::rename(aside.c_str(), path.c_str()) == 0) return;
    const int error = errno;
    std::remove(aside.c_str());
    throw cannotWrite(path, error);
}

void giveUpWriting(const std::string& aside, const std::string& path, int error)
{
    std::remove(aside.c_str());
    throw cannotWrite(path, error ? error : EIO);
}

void removeUnfinishedFiles()
{
    for (int i = 0; i < unfinishedCount; ++i) unlink(unfinished[i]);
}

} // namespace kvx
