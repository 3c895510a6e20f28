#include "host/kvx/files/streams.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"

#include <fmt/core.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kvx {
namespace {

namespace fs = std::filesystem;

/// The type bits of the item at a path, such as S_IFIFO; 0 if there is no item.
mode_t typeOf(const std::string& path)
{
    struct stat item = {};
    return stat(path.c_str(), &item) == 0 ? item.st_mode & S_IFMT : 0;
}

bool isInputStream(const std::string& path) { return path == standardStream || typeOf(path) == S_IFIFO; }

/// A file descriptor that the destructor closes.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }
    int release() { return std::exchange(number_, -1); }

private:
    int number_;
};

Failure cannotRead(const std::string& name, int error)
{
    return Failure(fmt::format("{} cannot be read: {}; name a file", name, std::strerror(error)));
}

/// Open a pipe or a device for a result. Waits for the reader of a pipe, until a signal.
int openToWrite(const std::string& path, const std::function<bool()>& isStopped)
{
    while (!isStopped()) {
        const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (file >= 0 || errno != EINTR) return file;
    }
    errno = EINTR;
    return -1;
}

} // namespace

bool isOutputStream(const std::string& path)
{
    const mode_t type = typeOf(path);
    return path == standardStream || type == S_IFIFO || type == S_IFCHR;
}

bool isStandardOutput(const std::string& path)
{
    struct stat named = {}, standard = {};
    return path == standardStream ||
           (stat(path.c_str(), &named) == 0 && fstat(STDOUT_FILENO, &standard) == 0 &&
            S_ISFIFO(named.st_mode) && named.st_dev == standard.st_dev && named.st_ino == standard.st_ino);
}

int openOutputStream(const std::string& path, const std::function<bool()>& isStopped)
{
    const bool isStandard = path == standardStream;
    Descriptor file(isStandard ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0) : openToWrite(path, isStopped));
    if (file.number() < 0) throw cannotWrite(path, errno);
    if (isatty(file.number()))
        throw Failure(
            fmt::format("{}: a terminal cannot play sound; name a file, or give the result to another "
                        "program: `kvx render FILE - | PROGRAM`",
                        isStandard ? "standard output" : path));
    return file.release();
}

int writeAll(int file, const char* bytes, std::size_t count, const std::function<bool()>& isStopped)
{
    while (count > 0) {
        const ssize_t written = write(file, bytes, count);
        if (written < 0 && errno != EINTR) return errno;
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
        if (count > 0 && isStopped()) return EINTR;
    }
    return 0;
}

SpooledInputs::~SpooledInputs()
{
    for (const std::string& path : temporaries_) std::remove(path.c_str());
}

std::optional<std::string> SpooledInputs::pathFor(const std::string& path)
{
    if (!isInputStream(path)) return path;
    if (!copies_.count(path)) copy(path);
    if (isStopped_()) return std::nullopt;
    return copies_.at(path);
}

/// Return the number of bytes read; 0 at the end and after a signal.
std::size_t SpooledInputs::readSome(int file, std::vector<char>& bytes, const std::string& name) const
{
    while (!isStopped_()) {
        const ssize_t got = read(file, bytes.data(), bytes.size());
        if (got >= 0) return static_cast<std::size_t>(got);
        if (errno != EINTR) throw cannotRead(name, errno);
    }
    return 0;
}

void SpooledInputs::copy(const std::string& path)
{
    const bool isStandard = path == standardStream;
    const std::string name = isStandard ? "standard input" : path;
    const Descriptor in(isStandard ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                   : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (in.number() < 0 && isStopped_()) return; // a signal has ended the wait for a writer of the pipe
    if (in.number() < 0) throw cannotRead(name, errno);
    if (isatty(in.number()))
        throw Failure(name +
                      " is a terminal; name a file, or give it the output of another program with a pipe");

    // The name of the copy is the name of the input, because messages show the name of a file without its
    // folder.
    std::string folder = temporaryFolder() + "/kvx-XXXXXX";
    if (!mkdtemp(folder.data())) throw cannotKeep(name, errno);
    const std::string copied = fs::path(folder) / fs::path(name).filename();
    temporaries_.insert(temporaries_.end(), {copied, folder});
    removeAtTheEnd(temporaries_);
    showInMessages(copied, name);

    const Descriptor out(open(copied.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
    if (out.number() < 0) throw cannotKeep(name, errno);
    std::vector<char> bytes(1 << 16);
    while (const std::size_t got = readSome(in.number(), bytes, name))
        if (const int error = writeAll(out.number(), bytes.data(), got, isStopped_);
            error != 0 && !isStopped_())
            throw cannotKeep(name, error);
    copies_[path] = copied;
}

} // namespace kvx
