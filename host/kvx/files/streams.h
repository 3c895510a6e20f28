// Standard input, standard output and pipes in place of files.
// All functions: [main].
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kvx {

/// The path that names standard input, or standard output.
constexpr const char* standardStream = "-";

/// Whether a result at `path` is written in order, and not into a file that is renamed at the end: standard
/// output, a pipe or a device such as /dev/null.
bool isOutputStream(const std::string& path);

/// Whether a result at `path` goes to standard output, where messages would be between the samples.
bool isStandardOutput(const std::string& path);

/// Open standard output or the pipe or device at `path` for a result. `isStopped` returns whether a signal
/// has ended the command. Returns  a file descriptor that belongs to the caller. Errors   throws Failure,
/// also if `path` is a terminal, and after a signal without a reader of the pipe.
int openOutputStream(const std::string& path, const std::function<bool()>& isStopped);

/// Write all bytes. A write that a signal interrupts continues, unless `isStopped` returns true.
/// Returns  0 or a value of errno; EINTR if the signal has ended the command.
int writeAll(int file, const char* bytes, std::size_t count, const std::function<bool()>& isStopped);

/// Copies standard input and pipes into temporary files, because the library opens files by path, and reads
/// them more than once. Messages name the inputs and not the copies. A process that is killed leaves its
/// copies.
class SpooledInputs {
public:
    /// `isStopped` returns whether a signal has ended the command.
    explicit SpooledInputs(std::function<bool()> isStopped) : isStopped_(std::move(isStopped)) {}
    ~SpooledInputs(); ///< removes the copies
    SpooledInputs(const SpooledInputs&) = delete;
    SpooledInputs& operator=(const SpooledInputs&) = delete;

    /// Copy the input if `path` is standard input or a pipe, until its end or a signal.
    /// Returns  the path of the copy, or `path` for any other file; nullopt after a signal.
    /// Errors   throws Failure.
    std::optional<std::string> pathFor(const std::string& path);

private:
    void copy(const std::string& path);
    std::size_t readSome(int file, std::vector<char>& bytes, const std::string& name) const;

    const std::function<bool()> isStopped_;
    std::map<std::string, std::string> copies_; // path of each copy, by the path that it replaces
    std::vector<std::string> temporaries_;      // the copies, each followed by its folder
};

} // namespace kvx
