#include "host/kvx/write_aside.h"

#include "host/kvx/failure.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
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
    case EMFILE:
    case ENFILE:
        return "close other programs";
    default:
        return "name a file in a folder that exists and that you may write to";
    }
}

Failure cannotWrite(const std::string& path, int error)
{
    return Failure(fmt::format("{} cannot be written: {}; {}", path, std::strerror(error), adviceFor(error)));
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
    return aside;
}

void moveIntoPlace(const std::string& aside, const std::string& path)
{
    if (std::rename(aside.c_str(), path.c_str()) == 0) return;
    const int error = errno;
    std::remove(aside.c_str());
    throw cannotWrite(path, error);
}

void giveUpWriting(const std::string& aside, const std::string& path)
{
    std::remove(aside.c_str());
    throw Failure(fmt::format("{} cannot be written to its end; make room on the disk", path));
}

} // namespace kvx
