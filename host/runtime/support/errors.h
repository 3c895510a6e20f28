// The three ways in which a host program's wish can fail, each a C++ exception on the host's side. None of
// them ever crosses a frame of the plug-in.
#pragma once

#include "abi/word.h"

#include <stdexcept>
#include <string>

namespace host {

/// The program asked for something that does not exist or does not fit: an unknown class, method or property,
/// the wrong number or type of arguments, a value of another kind. what() is a sentence for the program's
/// author.
class ProgramError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The library could not be loaded. what() says why and what to do next.
class LoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A host exception that the plug-in raised during a call, as the calling program sees it.
/// what() is "Class: message" (or the class alone where there is no message).
class HostException : public std::runtime_error {
public:
    HostException(std::string className, std::string message, HostInteger errorNumber)
        : std::runtime_error(message.empty() ? className : className + ": " + message),
          className_(std::move(className)), message_(std::move(message)), errorNumber_(errorNumber)
    {
    }

    const std::string& className() const { return className_; }
    const std::string& message() const { return message_; } ///< UTF-8; empty for a nil message
    HostInteger errorNumber() const { return errorNumber_; }

private:
    std::string className_;
    std::string message_;
    HostInteger errorNumber_;
};

} // namespace host
