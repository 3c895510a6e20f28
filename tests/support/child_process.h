// Child processes: their output, their exit code, and signals to them.
#pragma once

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace support {

struct ChildResult {
    int exitCode = -1; ///< exit code; -1 if a signal ended the child
    int signal = 0;
    std::string out;
    std::string err;
};

/// A child process. The output of the child goes to unnamed files, so that the child never waits for a
/// reader.
class Child {
public:
    using Environment = std::vector<std::pair<std::string, std::string>>;

    /// Start a program in `folder`. arguments[0] is the program's path, or its name in PATH. The child has
    /// the environment of the current process and the variables in `more`.
    /// Errors  throws std::runtime_error without a new process; exit code 127 if the program cannot run.
    explicit Child(const std::vector<std::string>& arguments, const Environment& more = {},
                   const std::string& folder = "");
    ~Child(); ///< kills the child if it still runs
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

/// Start a child, wait for its end, and return the result.
ChildResult runChild(const std::vector<std::string>& arguments, const Child::Environment& more = {},
                     const std::string& folder = "");

} // namespace support
