// Errors that the command shows to the user.
// All functions: [any].
#pragma once

#include <stdexcept>

namespace kvx {

/// An error that ends the command. what() is one line: the object, the problem and the next step. The command
/// prints this line and exits with code 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Standard output cannot be written, because the disk is full or the reader of the pipe has ended.
class OutputFailure : public Failure {
public:
    OutputFailure()
        : Failure("standard output cannot be written; check that its disk has free space and that its reader "
                  "still runs")
    {
    }
};

/// An argument does not fit its option, another argument or the library. The command prints what() and exits
/// with code 2.
class WrongUsage : public Failure {
public:
    using Failure::Failure;
};

} // namespace kvx
