#include "tests/support/child_process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace support {
namespace {

int unnamedFile()
{
    char path[] = "/tmp/kvx-output-XXXXXX";
    const int file = mkostemp(path, O_CLOEXEC);
    if (file < 0) throw std::runtime_error("no temporary file: " + std::string(std::strerror(errno)));
    unlink(path);
    return file;
}

std::string contents(int file)
{
    std::string text;
    char chunk[4096];
    off_t at = 0;
    for (ssize_t got; (got = pread(file, chunk, sizeof chunk, at)) > 0; at += got)
        text.append(chunk, std::size_t(got));
    return text;
}

} // namespace

Child::Child(const std::vector<std::string>& arguments, const Environment& more, const std::string& folder)
    : out_(unnamedFile()), err_(unnamedFile())
{
    std::vector<char*> words;
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    id_ = fork();
    if (id_ < 0) throw std::runtime_error("no child process: " + std::string(std::strerror(errno)));
    if (id_ > 0) return;

    // Restore the default actions, because a child inherits ignored signals (nohup ignores SIGHUP).
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, 0);
    dup2(out_, 1);
    dup2(err_, 2);
    for (const auto& [name, value] : more) setenv(name.c_str(), value.c_str(), 1);
    if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(127);
    execvp(words[0], words.data());
    _exit(127);
}

Child::~Child()
{
    if (isRunning()) {
        kill(id_, SIGKILL);
        waitpid(id_, &status_, 0);
    }
    close(out_);
    close(err_);
}

bool Child::isRunning()
{
    if (!hasEnded_) hasEnded_ = waitpid(id_, &status_, WNOHANG) != 0;
    return !hasEnded_;
}

void Child::send(int signal)
{
    if (isRunning()) kill(id_, signal);
}

std::string Child::outSoFar() const { return contents(out_); }

ChildResult Child::wait()
{
    if (!hasEnded_) waitpid(id_, &status_, 0);
    hasEnded_ = true;
    ChildResult result;
    if (WIFEXITED(status_)) result.exitCode = WEXITSTATUS(status_);
    if (WIFSIGNALED(status_)) result.signal = WTERMSIG(status_);
    result.out = contents(out_);
    result.err = contents(err_);
    return result;
}

ChildResult runChild(const std::vector<std::string>& arguments, const Child::Environment& more,
                     const std::string& folder)
{
    return Child(arguments, more, folder).wait();
}

} // namespace support
