// A command in a pseudo-terminal: a test reads the output, types keys, and sends signals.
#pragma once

#include <csignal>
#include <pty.h>
#include <stdexcept>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace endtoend {

class PtyChild {
public:
    explicit PtyChild(const std::vector<std::string>& arguments, unsigned short columns = 100,
                      const std::string& folder = "")
    {
        winsize size = {24, columns, 0, 0};
        id_ = forkpty(&terminal_, nullptr, nullptr, &size);
        if (id_ < 0) throw std::runtime_error("no pseudo-terminal is available");
        if (id_ != 0) return;
        std::vector<char*> texts;
        for (const std::string& each : arguments) texts.push_back(const_cast<char*>(each.c_str()));
        texts.push_back(nullptr);
        std::signal(SIGHUP, SIG_DFL); // restore SIGHUP: nohup may have started the test
        if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(127);
        execv(texts[0], texts.data());
        _exit(127);
    }
    ~PtyChild()
    {
        if (!hasEnded_) {
            kill(id_, SIGKILL);
            waitpid(id_, nullptr, 0);
        }
        close(terminal_);
    }
    PtyChild(const PtyChild&) = delete;
    PtyChild& operator=(const PtyChild&) = delete;

    void type(const std::string& keys)
    {
        if (write(terminal_, keys.data(), keys.size()) != ssize_t(keys.size()))
            throw std::runtime_error("the terminal does not accept keys");
    }
    void send(int signal) { kill(id_, signal); }
    void resize(unsigned short columns)
    {
        winsize size = {24, columns, 0, 0};
        ioctl(terminal_, TIOCSWINSZ, &size);
    }

    /// Read until `text` appears in the output after the text of the last call.
    /// Returns  false if the command ends first.
    bool waitFor(const std::string& text)
    {
        for (;;) {
            const auto at = shown_.find(text, seen_);
            if (at != shown_.npos) {
                seen_ = at + text.size();
                return true;
            }
            if (!readMore()) return false;
        }
    }

    /// Return all output that the test has read.
    const std::string& shown() const { return shown_; }

    /// Return whether the terminal is in the normal mode: line by line, with echo.
    bool isLineByLine() const
    {
        termios mode = {};
        return tcgetattr(terminal_, &mode) == 0 && (mode.c_lflag & ICANON) && (mode.c_lflag & ECHO);
    }

    /// Wait for the end of the command.
    /// Returns  the exit code, or 128 plus the number of the signal that ended the command.
    int wait()
    {
        while (readMore()) {
        }
        int status = 0;
        waitpid(id_, &status, 0);
        hasEnded_ = true;
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

private:
    bool readMore()
    {
        char chunk[4096];
        const ssize_t got = read(terminal_, chunk, sizeof chunk);
        if (got <= 0) return false;
        shown_.append(chunk, std::size_t(got));
        return true;
    }

    int terminal_ = -1;
    pid_t id_ = -1;
    std::string shown_;
    std::size_t seen_ = 0;
    bool hasEnded_ = false;
};

} // namespace endtoend
