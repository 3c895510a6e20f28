// Programs run as children: what they print, how they end, signals on the way.
#pragma once

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace support {

struct ChildResult {
    int exitCode = -1; ///< -1 when a signal ended it
    int signal = 0;
    std::string out;
    std::string err;
};

/// A running child. Its output goes to unnamed files, so that it never waits for a reader.
class Child {
public:
    using Environment = std::vector<std::pair<std::string, std::string>>;

    /// arguments[0] is the program's path, looked up in PATH if it has no slash. `more` is added to this
    /// process's environment. Throws std::runtime_error when it cannot be started.
    explicit Child(const std::vector<std::string>& arguments, const Environment& more = {},
                   const std::string& folder = "");
    ~Child(); ///< ends it, if it still runs
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t id() const { return id_; }
    bool isRunning();
    void send(int signal);
    ChildResult wait();
    std::string outSoFar() const;

private:
    pid_t id_ = -1;
    int out_ = -1;
    int err_ = -1;
    int status_ = 0;
    bool hasEnded_ = false;
};

/// Start, wait, tell.
ChildResult runChild(const std::vector<std::string>& arguments, const Child::Environment& more = {},
                     const std::string& folder = "");

} // namespace support
