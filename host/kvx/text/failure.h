// An error for the user.
#pragma once

#include <stdexcept>

namespace kvx {

/// what() is one line that names the thing and says what to do next. The command prints it and exits 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What is said cannot be written: the disk is full, or whoever listened is gone.
class OutputFailure : public Failure {
public:
    OutputFailure()
        : Failure(
              "the standard output cannot be written; see that its disk has room, or that its reader stays")
    {
    }
};

/// The command line itself makes no sense, which shows only once the library is there to ask. Exits 2.
class WrongUsage : public Failure {
public:
    using Failure::Failure;
};

} // namespace kvx
