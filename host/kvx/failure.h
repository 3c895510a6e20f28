// An error for the user.
#pragma once

#include <stdexcept>

namespace kvx {

/// what() is one line that names the thing and says what to do next. The command prints it and exits 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace kvx
