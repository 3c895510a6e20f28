#include "host/kvx/files/atomic_file.h"

#include "host/kvx/text/number_text.h"

#include <fmt/core.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace kvx {
namespace {

namespace fs = std::filesystem;

const char* adviceFor(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return "free some space on the disk";
    case ENAMETOOLONG:
        return "name a file with a shorter name";
    case EFBIG:
        return "write to a disk that takes larger files, or raise the limit with `ulimit -f unlimited`";
    case EPIPE:
        return "check that the reader of the pipe still runs";
    case EMFILE:
    case ENFILE:
        return "raise the limit with `ulimit -n`";
    default:
        return "name a file in a folder that exists and that you may write to";
    }
}

// The files to remove after a signal. Their paths contain the process number, so no other program uses the
// paths. The size is fixed, because a signal handler may not allocate.
char temporaries[8][PATH_MAX];
volatile std::sig_atomic_t temporaryCount = 0;

bool isRemembered(const std::string& path)
{
    const auto count = static_cast<std::size_t>(temporaryCount);
    for (std::size_t i = 0; i < count; ++i)
        if (path == temporaries[i]) return true;
    return false;
}

void remember(const std::string& path)
{
    const auto count = static_cast<std::size_t>(temporaryCount);
    if (isRemembered(path) || count == std::size(temporaries) || path.size() >= PATH_MAX) return;
    path.copy(temporaries[count], path.size());
    temporaryCount = static_cast<int>(count) + 1;
}

/// Follow the symbolic links at `path`. The last link may name a file that does not exist.
fs::path withoutLinks(fs::path path)
{
    constexpr int mostLinks = 40; // the limit of Linux
    std::error_code ignored;
    for (int i = 0; i < mostLinks && fs::is_symlink(path, ignored); ++i)
        path = path.parent_path() / fs::read_symlink(path, ignored); // an absolute link replaces the folder
    return path;
}

constexpr std::string_view temporaryEnd = ".part";

std::string temporaryPath(const fs::path& file, std::string_view end)
{
    return fmt::format("{}.{}{}", file.string(), getpid(), end);
}

/// Read the number of the process that writes a temporary file of the file `name`.
/// Errors  nullopt if `temporary` is not the name of such a file.
std::optional<pid_t> writerOf(std::string_view temporary, const std::string& name)
{
    const std::string start = name + ".";
    const std::size_t fixed = start.size() + temporaryEnd.size();
    if (temporary.size() <= fixed || temporary.substr(0, start.size()) != start ||
        temporary.substr(temporary.size() - temporaryEnd.size()) != temporaryEnd)
        return std::nullopt;
    return readDecimal<pid_t>(temporary.substr(start.size(), temporary.size() - fixed));
}

/// Remove the temporary files of `file` whose processes no longer run.
void removeLeftovers(const fs::path& file)
{
    const fs::path folder = file.has_parent_path() ? file.parent_path() : ".";
    std::error_code ignored;
    for (fs::directory_iterator item(folder, ignored), end; item != end; item.increment(ignored)) {
        const std::optional<pid_t> writer = writerOf(item->path().filename().string(), file.filename());
        if (!writer || *writer <= 0) continue;
        // In a container, an ended process often had the number of this process.
        const bool isInUse = *writer == getpid() ? isRemembered(temporaryPath(file, temporaryEnd))
                                                 : kill(*writer, 0) == 0 || errno != ESRCH;
        if (!isInUse) fs::remove(item->path(), ignored);
    }
}

} // namespace

Failure cannotWrite(const std::string& path, int error)
{
    return Failure(fmt::format("{} cannot be written: {}; {}", path, std::strerror(error), adviceFor(error)));
}

std::string temporaryFolder()
{
    const char* const requested = std::getenv("TMPDIR");
    return requested && *requested ? requested : "/tmp";
}

Failure cannotKeep(const std::string& what, int error)
{
    return Failure(
        fmt::format("{} cannot be copied to {}: {}; let TMPDIR name a folder with enough free space", what,
                    temporaryFolder(), std::strerror(error)));
}

void refuseToOverwrite(const std::vector<std::string>& inputs, const std::string& path, const char* option)
{
    std::error_code ignored;
    for (const std::string& input : inputs)
        if (fs::equivalent(input, path, ignored))
            throw Failure(fmt::format(
                "{} is being played and cannot be written at the same time; name another file for {}", path,
                option));
}

std::string temporaryPathFor(const std::string& path)
{
    struct stat status = {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (!exists && errno == ELOOP) throw cannotWrite(path, errno);
    if (exists && !S_ISREG(status.st_mode))
        throw Failure(fmt::format("{} cannot be written: it is {}", path,
                                  S_ISDIR(status.st_mode) ? "a folder; name a file in it"
                                                          : "not a plain file; name a file"));
    const fs::path real = withoutLinks(path);
    removeLeftovers(real);
    const std::string temporary = temporaryPath(real, temporaryEnd);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(temporary, ignored))) throw cannotWrite(path, EEXIST);
    // The file of the check has another name, so a file with the temporary name is always a result. The
    // platform also gives a finished capture this name, before its final one.
    const std::string check = temporaryPath(real, "");
    const int file = open(check.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    if (file < 0) throw cannotWrite(path, errno);
    close(file);
    std::remove(check.c_str());
    removeAtTheEnd({temporary, check});
    return temporary;
}

void removeAtTheEnd(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths) remember(path);
}

void moveIntoPlace(const std::string& temporary, const std::string& path)
{
    const fs::path real = withoutLinks(path);
    struct stat former = {};
    if (stat(real.c_str(), &former) == 0) chmod(temporary.c_str(), former.st_mode & 07777);
    if (std::rename(temporary.c_str(), real.c_str()) == 0) return;
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
    for (int i = 0; i < temporaryCount; ++i)
        if (unlink(temporaries[i]) != 0) rmdir(temporaries[i]);
}

} // namespace kvx
